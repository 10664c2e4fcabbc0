#include "session/bxcommand.h"

#include <string>

namespace {
const char* const separators = " ;\t\r\n";

/** Words with two dashes, and the keys that they stand for. */
struct LongWord {
    const char* word;
    char key;
};
constexpr LongWord longWords[] = {{"--help", 'h'}, {"--version", 'v'}};

bool isSign(char c) {
    return c == '-' || c == '+' || c == '=';
}
} // namespace

bool isKeyString(const bxString& word) {
    return word.length() >= 2 && (word.c_str()[0] == '-' || word.c_str()[0] == '/');
}

bool bxCommandKey::setArg(bxString word, bxString next) {
    if (!isKeyString(word))
        return false;
    for (const LongWord& row : longWords)
        if (word == row.word) {
            m_key = row.key;
            m_argument = "";
            return true;
        }
    m_key = word.c_str()[1];
    bxString rest = word.substr(2);
    bxString sign;
    if (rest.length() > 0 && isSign(rest.c_str()[0])) {
        sign = bxString(rest.c_str()[0]);
        rest = rest.substr(1);
    }
    m_argument = sign + (rest.length() > 0 ? rest : next);
    return true;
}

bool bxCommandKey::getArg(char key, bxString& argument) const {
    if (!isKey(key))
        return false;
    argument = m_argument;
    return true;
}

void bxCommandKey::removeQuotes() {
    std::string text(m_argument.view());
    std::erase(text, '"');
    m_argument = bxString(std::string_view(text));
}

void bxCommandList::removeQuotes() {
    for (bxCommandKey& key : *this)
        key.removeQuotes();
}

void bxCommandList::setArgs(int argc, char** argv) {
    bxStringList words;
    for (int i = 0; i < argc; ++i)
        words.insert(words.end(), argv[i]);
    setArgs(words);
}

void bxCommandList::setArgs(const char* text) {
    bxStringList words;
    bxString(text).parse(words, separators);
    for (bxString& word : words) // quotes around a key and its argument
        if (word[0] == '"' && isKeyString(word.substr(1)))
            word = word.substr(1, word.length() - (word.view().ends_with('"') ? 2 : 1));
    setArgs(words);
}

void bxCommandList::setArgs(const bxStringList& words) {
    for (auto word = words.begin(); word != words.end();) {
        auto next = word;
        ++next;
        bxString candidate;
        auto following = next;
        if (next != words.end() && !isKeyString(*next)) {
            candidate = *next;
            ++following;
        }
        setArg(*word, candidate);
        word = following;
    }
}

bool bxCommandList::setArg(bxString word, bxString next) {
    bxCommandKey key;
    if (!key.setArg(word, next))
        return false;
    insert(end(), key);
    return true;
}

bool bxCommandList::setArg(char key, bxString argument) {
    return setArg(bxString("-") + bxString(key) + argument, bxString());
}

bool bxCommandList::isKey(char key) const {
    bxString ignored;
    return getArg(key, ignored);
}

bool bxCommandList::getArg(char key, bxString& argument) const {
    bool found = false;
    for (const bxCommandKey& item : *this)
        found = item.getArg(key, argument) || found;
    return found;
}
