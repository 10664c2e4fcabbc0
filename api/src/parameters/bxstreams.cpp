/** \file
 * The nine streams: their storage, and the counter that builds and destroys them in order. They live in this
 * room, above the output, because parameter input is one of them.
 */
#include "output/bxstreams.h"

#include "output/bxcstream.h"
#include "output/bxiostream.h"
#include "output/bxostream.h"
#include "output/bxtrace.h"
#include "parameters/bxistream.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

/** Room for an object that is built and destroyed by hand, so that a reference to it is a constant. */
template <class T>
union Storage {
    constexpr Storage() : none() {}
    ~Storage() {}
    char none;
    T object;
};

constinit Storage<bxOStream> messages;
constinit Storage<bxCStream> results;
constinit Storage<bxCStream> names;
constinit Storage<bxCStream> summary;
constinit Storage<bxCStream> memory;
constinit Storage<bxIStream> parameters;
constinit Storage<bxTrace> trace;
constinit Storage<i_stream> input;
constinit Storage<o_stream> output;

/** Number of units whose counter object lives. */
constinit int units = 0;

} // namespace

constinit bxOStream& g_ostrm = messages.object;
constinit bxCStream& g_cstrm = results.object;
constinit bxCStream& g_qstrm = names.object;
constinit bxCStream& g_ustrm = summary.object;
constinit bxCStream& g_mstrm = memory.object;
constinit bxIStream& g_istrm = parameters.object;
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
    std::construct_at(&g_istrm);
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
    std::destroy_at(&g_istrm);
    std::destroy_at(&g_mstrm);
    std::destroy_at(&g_ustrm);
    std::destroy_at(&g_qstrm);
    std::destroy_at(&g_cstrm);
    std::destroy_at(&g_ostrm);
}
