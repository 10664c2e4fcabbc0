/** \file
 * The trace of the harness's own steps.
 */
#ifndef BXTRACE_H
#define BXTRACE_H

#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"
#include "output/bxstreams.h"

#include <string_view>

/**
 * The stack of open steps, innermost first. Each step is announced on the message stream at level TRACE, and
 * a fault message can name the step that it happened in.
 */
class bxTrace : public bxList<bxString> {
  public:
    /** Opens a step. */
    void traceIn(std::string_view name);
    void traceIn(const char* name) { traceIn(std::string_view(name)); }
    void traceIn(const bxString& name) { traceIn(name.view()); }
    /** Closes a step and all steps inside it that are still open. */
    void traceOut(std::string_view name);
    void traceOut(const char* name) { traceOut(std::string_view(name)); }
    void traceOut(const bxString& name) { traceOut(name.view()); }
    /** The innermost open step, or the empty text. */
    bxString getCurName() const;
    /** Forgets all open steps. */
    void clear();
    /** One "*" for each open step. */
    bxString indent() const;
    /** Flushes the message stream when its message level does not exceed its output level. */
    void flush() const;

  private:
    void announce(const char* direction, std::string_view name) const;

    int m_depth = 0;
    bxList<bxString>
        m_closed; /**< steps to be opened again: a run opens millions, and needs no memory for it */
};

#endif
