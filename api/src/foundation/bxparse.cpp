#include "foundation/bxparse.h"

#include <algorithm>
#include <string>

namespace {

/** Copies the leading words; every output that no word is left for becomes empty. */
void copyWords(bxStringList& words, std::initializer_list<bxString*> outputs) {
    auto word = words.begin();
    for (bxString* output : outputs)
        *output = word == words.end() ? bxString() : *word++;
}

} // namespace

void bxParse::initParse(const bxString& separators) {
    m_position = 0;
    m_separators = separators;
    m_quoteState = separators.find('"') >= 0 ? quotesAreSeparators : outsideQuotes;
}

bool bxParse::isSeparator(int index) {
    const char c = m_text[index];
    if (m_quoteState >= 0) {
        if (c == '"')
            m_quoteState = m_quoteState == index - 1 ? 0 : outsideQuotes;
        return false;
    }
    if (m_quoteState == outsideQuotes && c == '"') {
        m_quoteState = index;
        return false;
    }
    return m_separators.view().find(c) != std::string_view::npos;
}

bool bxParse::nextWord(bxString& word) {
    word = bxString();
    const int length = m_text.length();
    while (m_position < length && isSeparator(m_position))
        ++m_position;
    if (m_position == length)
        return false;
    const int first = m_position++;
    while (m_position < length && !isSeparator(m_position))
        ++m_position;
    word = m_text.substr(first, m_position - first);
    removeQuote(word);
    return true;
}

void bxParse::removeQuote(bxString& word) const {
    if (m_quoteState == quotesAreSeparators)
        return;
    std::string text(word.view());
    const auto adjacent = [](char a, char b) { return a == '"' && b == '"'; };
    text.erase(std::unique(text.begin(), text.end(), adjacent), text.end());
    word = bxString(text);
}

int bxParse::parse(bxStringList& words, const bxString& separators) {
    words.clear();
    initParse(separators);
    bxString word;
    int n = 0;
    for (; nextWord(word); ++n)
        words.push_back(word);
    return n;
}

int bxParse::parse(bxString& w1, bxString& w2, const bxString& separators) {
    bxStringList words;
    const int n = parse(words, separators);
    copyWords(words, {&w1, &w2});
    return n;
}

int bxParse::parse(bxString& w1, bxString& w2, bxString& w3, const bxString& separators) {
    bxStringList words;
    const int n = parse(words, separators);
    copyWords(words, {&w1, &w2, &w3});
    return n;
}
