/** \file
 * The model of a named parameter: what every setting of the session and of a test has in common.
 */
#ifndef BXPARAMETER_H
#define BXPARAMETER_H

#include "foundation/bxstring.h"

class bxCStream;
class bxIStream;
class bxOStream;
struct bxGiven;

/**
 * A named setting: its console prompt, its one-shot iteration and its way into the listing and the table.
 * The base holds no value. Objects are declared once and handed round by reference.
 */
class bxParameter {
  public:
    /** Bits of the output flags. */
    enum OutputFlag {
        quoted = 2 /**< the table cell holds the value in quotes */
    };

    /** An empty prompt stands for the name. A parameter without a name is never read and never listed. */
    bxParameter(bxString name, bxString prompt);
    bxParameter(const bxParameter&) = delete;
    bxParameter& operator=(const bxParameter&) = delete;
    virtual ~bxParameter() = default;

    /** Forgets the iteration; parameters with a value also set it to 0. */
    virtual void reset();
    /** The current value as text. */
    virtual bxString valueString() const;
    /** The text that, read back, gives the present setting; shown as the default of a question. */
    virtual bxString defaultString() const;
    /** The allowed values in words; empty when any is allowed. */
    virtual bxString validString() const;
    /** "name = default text", the line of the listing. */
    virtual bxString description() const;
    /** The text of the question, with the allowed values in braces where there are any. */
    virtual bxString prompt() const;

    virtual void resetIterator();
    /** Restarts the sequence of values and takes its first; false when there is none. */
    virtual bool firstValue();
    /** Takes the next value of the sequence (a plain parameter has one); false at the end. */
    virtual bool nextValue();

    /** True when some values of the parameter are deprecated. */
    virtual bool isDeprecatedParm() const;
    virtual bool isDeprecatedValue() const;
    /** Marks (or unmarks) the current value as deprecated where it is; returns whether it is now marked. */
    virtual bool setDeprecatedFlag(bool on);

    /** Writes "name=value " to the listing. */
    virtual void toOStream(bxOStream& out) const;
    /** The column of the table cell, or -1 for the next free one. */
    virtual int colmIndex() const;
    /** Writes the value cell. */
    virtual void toCStream(bxCStream& table) const;
    /** Writes the name as heading cell. */
    virtual void nameToCStream(bxCStream& table) const;

    /**
     * Gets the value from the input stream and lists it; a parameter that needs no input is only listed.
     * Throws bxException for a text that is no value, saying where it stands and what is allowed, and for a
     * fault raised while reading. Says it where only the beginning of a text was read.
     */
    virtual void fromIStream(bxIStream& in);
    /** Takes the value from text; throws bxException, and keeps the old value, when it cannot. */
    virtual void translate(bxString text);

    const bxString& name() const { return m_name; }
    void setName(bxString name) { m_name = name; }
    void setPrompt(bxString prompt) { m_prompt = prompt; }
    /** While set (as at first), fromIStream obtains a value; else it only lists the parameter. */
    void setNeedsInput(bool on) { m_needsInput = on; }
    bool needsInput() const { return m_needsInput; }
    void setOutputFlags(int flags) { m_outputFlags = flags; }

  protected:
    /** The prompt as given, or the name. */
    bxString plainPrompt() const;
    void setDeprecated(bool on, bxString text);
    /** What may be given, in words, for a refusal; empty when that cannot be said. */
    virtual bxString allowedText() const { return validString(); }
    /** Throws the bxException "Invalid value of NAME = TEXT". */
    [[noreturn]] void refuse(const bxString& text) const;
    /** Throws the bxException of a list without a value. */
    [[noreturn]] static void refuseEmpty();
    /** For `translate`: notes when only the beginning of a text was read. */
    void noteReading(bool whole) { m_readPartly = m_readPartly || !whole; }
    /** Whether a text like "16; 64; *2" is a range and not a list of values. */
    virtual bool takesRanges() const { return false; }

  private:
    bxString tableText() const;
    void toColumn(bxCStream& table, bxString text) const;
    void list(bool always) const;
    void obtain(bxIStream& in);
    void translateGuarded(bxIStream& in);
    bxString details(const bxGiven& given, bool withText) const;

    bxString m_name;
    bxString m_prompt;
    bool m_valueProduced = false;
    bool m_needsInput = true;
    bool m_readPartly = false;
    int m_outputFlags = 0;
    bool m_deprecatedFlag = false;
    bxString m_deprecatedText;
};

#endif
