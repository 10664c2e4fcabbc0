/** \file
 * All of the harness.
 */
#ifndef BX_H
#define BX_H

#include "foundation/bxlist.h"
#include "foundation/bxnames.h"
#include "foundation/bxparse.h"
#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"

#include "output/bxcstream.h"
#include "output/bxiostream.h"
#include "output/bxlevels.h"
#include "output/bxostream.h"
#include "output/bxpaths.h"
#include "output/bxstreams.h"
#include "output/bxtrace.h"

#include "system/bxclock.h"
#include "system/bxcpuid.h"
#include "system/bxcputype.h"
#include "system/bxenvironment.h"
#include "system/bxhost.h"
#include "system/bxostimer.h"
#include "system/bxpriority.h"
#include "system/bxprobes.h"

#include "data/bxalloc.h"
#include "data/bxobject.h"

#include "timing/bxcallwatch.h"
#include "timing/bxexception.h"
#include "timing/bxfpwatch.h"
#include "timing/bxprecise.h"
#include "timing/bxresult.h"
#include "timing/bxsignal.h"
#include "timing/bxstatistics.h"
#include "timing/bxtool.h"
#include "timing/bxwatchdog.h"

#include "parameters/bxcacheiterator.h"
#include "parameters/bxdefault.h"
#include "parameters/bxenumiterator.h"
#include "parameters/bxinifile.h"
#include "parameters/bxistream.h"
#include "parameters/bxiterator.h"
#include "parameters/bxmap.h"
#include "parameters/bxparameter.h"
#include "parameters/bxparmlist.h"
#include "parameters/bxstepiterator.h"

#include "framework/bxconditions.h"
#include "framework/bxcpureport.h"
#include "framework/bxhotlist.h"
#include "framework/bxinfotests.h"
#include "framework/bxreportformat.h"
#include "framework/bxreports.h"
#include "framework/bxsessionmodes.h"
#include "framework/bxtest.h"
#include "framework/bxtestinfo.h"
#include "framework/bxtestlist.h"
#include "framework/bxtraced.h"

#include "session/bxcommand.h"
#include "session/bxdialogue.h"
#include "session/bxkeys.h"
#include "session/bxoption.h"
#include "session/bxregister.h"
#include "session/bxsession.h"

#endif
