/** \file
 * Words of a command line turned into keys with their arguments.
 */
#ifndef BXCOMMAND_H
#define BXCOMMAND_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"

/** True when the word is a key: at least two characters, the first of them "-" or "/". */
bool isKeyString(const bxString& word);

/** One key of a command line and its argument. The argument may begin with a sign: "-", "+" or "=". */
class bxCommandKey {
  public:
    /**
     * Reads the key from `word`; `next` is the argument when the word itself holds none. False when the
     * word is no key string. "--help" and "--version" are -h and -v without an argument.
     */
    bool setArg(bxString word, bxString next);

    bool isKey(char key) const { return m_key == key; }
    /** Copies the argument when this is the key asked for. */
    bool getArg(char key, bxString& argument) const;

    char key() const { return m_key; }
    const bxString& argument() const { return m_argument; }
    /** Removes the quotes that group the words of the argument. */
    void removeQuotes();

  private:
    char m_key = ' ';
    bxString m_argument;
};

/** The keys of a command line in the order in which they were written. */
class bxCommandList : public bxList<bxCommandKey> {
  public:
    /** Every element of the vector is one word. */
    void setArgs(int argc, char** argv);
    /** One line of text, split at blanks, semicolons, tabs and line ends; quotes group words. */
    void setArgs(const char* text);
    /**
     * A word that is no key belongs to the key before it when that key has no argument of its own, and is
     * lost otherwise.
     */
    void setArgs(const bxStringList& words);

    /** Appends the key that `word` holds; false, and nothing is appended, when it holds none. */
    bool setArg(bxString word, bxString next);
    bool setArg(char key, bxString argument);
    /** Of a line of text: takes the quotes off that a shell would have taken off. */
    void removeQuotes();

    bool isKey(char key) const;
    /** The argument of the last such key; false when there is none. */
    bool getArg(char key, bxString& argument) const;
};

#endif
