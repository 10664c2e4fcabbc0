/** \file
 * The streams of the harness that are output or console; parameter input has its own header.
 *
 * Each unit that includes this file, as all headers of the streams do, carries a counter object: the first
 * one to be constructed builds the streams in the order given here, the last one to go destroys them in the
 * reverse order. So the streams may be used by every static initialiser and every static destructor of that
 * unit.
 */
#ifndef BXSTREAMS_H
#define BXSTREAMS_H

class bxCStream;
class bxOStream;
class bxTrace;
class i_stream;
class o_stream;

extern bxOStream& g_ostrm; /**< messages */
extern bxCStream& g_cstrm; /**< result table */
extern bxCStream& g_qstrm; /**< table of parameter names */
extern bxCStream& g_ustrm; /**< summary table */
extern bxCStream& g_mstrm; /**< memory table */
extern bxTrace& g_trace;   /**< call trace */
extern i_stream& c_in;     /**< standard input */
extern o_stream& c_out;    /**< standard output */

/** Keeps the streams alive. */
class bxStreamsInit {
  public:
    bxStreamsInit();
    ~bxStreamsInit();
    bxStreamsInit(const bxStreamsInit&) = delete;
    bxStreamsInit& operator=(const bxStreamsInit&) = delete;
};

static const bxStreamsInit s_bxStreamsInit;

#endif
