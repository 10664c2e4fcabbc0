/** \file
 * Splits a text into words.
 */
#ifndef BXPARSE_H
#define BXPARSE_H

#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"

/**
 * Splits one text once. Unless '"' is itself a separator, separators between quotes belong to the word; the
 * quotes stay in it, and runs of quotes shrink to one.
 */
class bxParse {
  public:
    explicit bxParse(const bxString& text) : m_text(text) {}

    /** Starts from the beginning; each character of `separators` separates. */
    void initParse(const bxString& separators);
    /** Cuts out the next word; false, with an empty word, when none is left. */
    bool nextWord(bxString& word);
    /** Classifies the character at an index and follows the quotes; to be called once for each character in
     * order. */
    bool isSeparator(int index);
    /** Reduces adjacent quotes to one, where quotes are not separators. */
    void removeQuote(bxString& word) const;

    /** All words; returns their number. */
    int parse(bxStringList& words, const bxString& separators);
    /** The leading words, missing ones empty; returns the number of all words. */
    int parse(bxString& w1, bxString& w2, const bxString& separators);
    int parse(bxString& w1, bxString& w2, bxString& w3, const bxString& separators);

  private:
    /** Quote states; a state of 0 or more is the index of the quote that opened the stretch, or 0. */
    static constexpr int quotesAreSeparators = -100;
    static constexpr int outsideQuotes = -1;

    bxString m_text;
    bxString m_separators;
    int m_position = 0;
    int m_quoteState = outsideQuotes;
};

#endif
