#include "foundation/bxstring.h"

#include "foundation/bxparse.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::string_view blanks = " \t\r";
constexpr std::string_view pathSeparators = "/\\";

int toIndex(std::size_t position) {
    return position == std::string_view::npos ? -1 : static_cast<int>(position);
}

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

bool bxString::operator==(const bxString& other) const noexcept {
    return std::strcmp(c_str(), other.c_str()) == 0;
}

bxString operator+(const bxString& a, const bxString& b) {
    bxString sum = a;
    return sum += b;
}

int bxString::find(const bxString& text, int start) const noexcept {
    return toIndex(view().find(text.view(), static_cast<std::size_t>(std::max(start, 0))));
}

int bxString::rfind(const bxString& text) const noexcept {
    return toIndex(view().rfind(text.view()));
}

bxString bxString::substr(int pos, int n) const {
    const int first = std::clamp(pos, 0, length());
    return bxString(view().substr(static_cast<std::size_t>(first), static_cast<std::size_t>(std::max(n, 0))));
}

int bxString::compare(const bxString& other) const noexcept {
    const auto [mine, theirs] =
        std::mismatch(view().begin(), view().end(), other.view().begin(), other.view().end());
    if (mine == view().end() || theirs == other.view().end())
        return length() - other.length();
    return static_cast<signed char>(*mine) < static_cast<signed char>(*theirs) ? -1 : 1;
}

void bxString::resize(int n, char fill) {
    m_text.resize(static_cast<std::size_t>(std::max(n, 0)), fill);
}

void bxString::trim() {
    m_text.erase(m_text.find_last_not_of(blanks) + 1); // from the start, where there are blanks only
    m_text.erase(0, m_text.find_first_not_of(blanks));
}

bxString bxString::toLower() const {
    bxString copy = *this;
    std::transform(copy.m_text.begin(), copy.m_text.end(), copy.m_text.begin(), lowered);
    return copy;
}

bxString bxString::getFileName() const {
    return substr(toIndex(view().find_last_of(pathSeparators)) + 1);
}

bxString bxString::getFileDir() const {
    return substr(0, toIndex(view().find_last_of(pathSeparators)) + 1);
}

bxString bxString::getFileTitle() const {
    const bxString name = getFileName();
    const int dot = toIndex(name.view().rfind('.'));
    return dot < 0 ? name : name.substr(0, dot);
}

int bxString::parse(bxStringList& words, const bxString& separators) const {
    return bxParse(*this).parse(words, separators);
}

int bxString::parse(bxString& w1, bxString& w2, const bxString& separators) const {
    return bxParse(*this).parse(w1, w2, separators);
}

int bxString::parse(bxString& w1, bxString& w2, bxString& w3, const bxString& separators) const {
    return bxParse(*this).parse(w1, w2, w3, separators);
}

bool fitString(const bxString& word, const bxString& name, int skip) {
    const bxString sought = word.toLower();
    const bxString lowName = name.toLower();
    const std::string_view whole = lowName.view();
    const auto skipped = static_cast<std::size_t>(std::clamp(skip, 0, name.length()));
    return whole.starts_with(sought.view()) || whole.substr(skipped).starts_with(sought.view());
}
