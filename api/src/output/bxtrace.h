/** \file
 * The trace of the harness's own steps.
 */
#ifndef BXTRACE_H
#define BXTRACE_H

#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"
#include "output/bxstreams.h"

/**
 * The stack of open steps, innermost first. Each step is announced on the message stream at level TRACE, and
 * a fault message can name the step that it happened in.
 */
class bxTrace : public bxList<bxString> {
  public:
    /** Opens a step. */
    void traceIn(const char* name);
    void traceIn(const bxString& name) { traceIn(name.c_str()); }
    /** Closes a step and all steps inside it that are still open. */
    void traceOut(const char* name);
    void traceOut(const bxString& name) { traceOut(name.c_str()); }
    /** The innermost open step, or the empty text. */
    bxString getCurName() const;
    /** Forgets all open steps. */
    void clear();
    /** One "*" for each open step. */
    bxString indent() const;
    /** Flushes the message stream when its message level does not exceed its output level. */
    void flush();

  private:
    void announce(const char* direction, const char* name);

    int m_depth = 0;
    bxList<bxString>
        m_closed; /**< steps to be opened again: a run opens millions, and needs no memory for it */
};

#endif
