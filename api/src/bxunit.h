/** \file
 * What a test unit needs of the harness: texts and lists, streams, data, parameters, the test and its engine,
 * and the hooks that announce them.
 */
#ifndef BXUNIT_H
#define BXUNIT_H

#include "data/bxalloc.h"
#include "data/bxobject.h"
#include "foundation/bxlist.h"
#include "foundation/bxnames.h"
#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"
#include "framework/bxhotlist.h"
#include "framework/bxregister.h"
#include "framework/bxtest.h"
#include "framework/bxtestinfo.h"
#include "framework/bxtestlist.h"
#include "output/bxcstream.h"
#include "output/bxiostream.h"
#include "output/bxlevels.h"
#include "output/bxostream.h"
#include "output/bxpaths.h"
#include "output/bxstreams.h"
#include "output/bxtrace.h"
#include "parameters/bxcacheiterator.h"
#include "parameters/bxdefault.h"
#include "parameters/bxenumiterator.h"
#include "parameters/bxiterator.h"
#include "parameters/bxmap.h"
#include "parameters/bxparameter.h"
#include "parameters/bxparmlist.h"
#include "parameters/bxstepiterator.h"
#include "system/bxclock.h"
#include "system/bxenvironment.h"
#include "timing/bxexception.h"
#include "timing/bxfpwatch.h"
#include "timing/bxresult.h"
#include "timing/bxsignal.h"
#include "timing/bxtool.h"

#endif
