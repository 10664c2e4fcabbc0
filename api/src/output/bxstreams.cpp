#include "output/bxstreams.h"

#include "output/bxcstream.h"
#include "output/bxiostream.h"
#include "output/bxostream.h"
#include "output/bxstorage.h"
#include "output/bxtrace.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

constinit bxStorage<bxOStream> messages;
constinit bxStorage<bxCStream> results;
constinit bxStorage<bxCStream> names;
constinit bxStorage<bxCStream> summary;
constinit bxStorage<bxCStream> memory;
constinit bxStorage<bxTrace> trace;
constinit bxStorage<i_stream> input;
constinit bxStorage<o_stream> output;

/** Number of units whose counter object lives. */
constinit int units = 0;

} // namespace

constinit bxOStream& g_ostrm = messages.object;
constinit bxCStream& g_cstrm = results.object;
constinit bxCStream& g_qstrm = names.object;
constinit bxCStream& g_ustrm = summary.object;
constinit bxCStream& g_mstrm = memory.object;
constinit bxTrace& g_trace = trace.object;
constinit i_stream& c_in = input.object;
constinit o_stream& c_out = output.object;

bxStreamsInit::bxStreamsInit() {
    if (units++ > 0)
        return;
    std::construct_at(&g_ostrm);
    std::construct_at(&g_cstrm);
    std::construct_at(&g_qstrm);
    std::construct_at(&g_ustrm);
    std::construct_at(&g_mstrm);
    std::construct_at(&g_trace);
    std::construct_at(&c_in, stdin);
    std::construct_at(&c_out, stdout);
}

bxStreamsInit::~bxStreamsInit() {
    if (--units > 0)
        return;
    // The message stream outlives standard output, and must not touch it any more.
    g_ostrm.erase(std::remove(g_ostrm.begin(), g_ostrm.end(), &c_out), g_ostrm.end());
    std::destroy_at(&c_out);
    std::destroy_at(&c_in);
    std::destroy_at(&g_trace);
    std::destroy_at(&g_mstrm);
    std::destroy_at(&g_ustrm);
    std::destroy_at(&g_qstrm);
    std::destroy_at(&g_cstrm);
    std::destroy_at(&g_ostrm);
}
