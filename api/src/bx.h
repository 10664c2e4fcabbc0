/** \file
 * All of the harness, for programs that make a session of their own.
 */
#ifndef BX_H
#define BX_H

#include "bxunit.h"
#include "foundation/bxparse.h"
#include "framework/bxconditions.h"
#include "framework/bxcpureport.h"
#include "framework/bxinfotests.h"
#include "framework/bxreportformat.h"
#include "framework/bxreports.h"
#include "framework/bxsessionmodes.h"
#include "parameters/bxinifile.h"
#include "parameters/bxistream.h"
#include "session/bxcommand.h"
#include "session/bxdialogue.h"
#include "session/bxkeys.h"
#include "session/bxoption.h"
#include "session/bxsession.h"
#include "system/bxcpuid.h"
#include "system/bxcputype.h"
#include "system/bxhost.h"
#include "system/bxostimer.h"
#include "system/bxpriority.h"
#include "system/bxprobes.h"

#endif
