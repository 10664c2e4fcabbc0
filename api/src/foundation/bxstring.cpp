#include "foundation/bxstring.h"

#include "foundation/bxparse.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

namespace {

constexpr std::string_view blanks = " \t\r";
constexpr std::string_view pathSeparators = "/\\";

int toIndex(std::size_t position) {
    return position == std::string_view::npos ? -1 : static_cast<int>(position);
}

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

void copyText(char* to, std::string_view text) {
    if (!text.empty())
        std::memmove(to, text.data(), text.size());
}

} // namespace

bxString& bxString::operator=(const bxString& other) {
    if (this != &other)
        assign(other.view());
    return *this;
}

bxString& bxString::operator=(bxString&& other) noexcept {
    if (this != &other)
        take(other);
    return *this;
}

/** Leaves the other text empty; the conversion-failed flags stay where they are. */
void bxString::take(bxString& other) noexcept {
    m_long = std::move(other.m_long);
    std::memcpy(m_short, other.m_short, shortest);
    m_length = std::exchange(other.m_length, 0);
    m_capacity = std::exchange(other.m_capacity, shortest);
    std::memset(other.m_short, 0, shortest);
}

/** The text may lie in the present buffer. */
void bxString::assign(std::string_view text) {
    const int length = static_cast<int>(text.size());
    Buffer old; // lives until the text is copied
    if (getBufSize(length) != m_capacity) {
        old = std::move(m_long);
        m_capacity = shortest;
        extend(length);
    }
    copyText(buffer(), text);
    std::memset(buffer() + length, 0, static_cast<std::size_t>(m_capacity - length));
    m_length = length;
}

/** Makes room for a text that is longer than the buffer; what is new in the buffer is NUL. */
void bxString::extend(int length) {
    const int capacity = getBufSize(length);
    if (capacity <= m_capacity)
        return;
    // In place where the system can, so that a long text appended to piece by piece is not copied for each
    // piece.
    void* grown = std::realloc(m_long.get(), static_cast<std::size_t>(capacity));
    if (!grown)
        throw std::bad_alloc();
    const bool wasShort = !m_long;
    static_cast<void>(m_long.release());
    m_long.reset(static_cast<char*>(grown));
    if (wasShort)
        std::memcpy(m_long.get(), m_short, shortest);
    std::memset(m_long.get() + m_capacity, 0, static_cast<std::size_t>(capacity - m_capacity));
    m_capacity = capacity;
}

/** The text may lie in the present buffer. */
bxString& bxString::append(std::string_view text) {
    const int length = m_length + static_cast<int>(text.size());
    if (length >= m_capacity) {
        const char* before = c_str();
        const bool own =
            !std::less<>()(text.data(), before) && !std::less<>()(before + m_length, text.data());
        const std::ptrdiff_t place = own ? text.data() - before : 0;
        extend(length);
        if (own)
            text = std::string_view(c_str() + place, text.size());
    }
    copyText(buffer() + m_length, text);
    m_length = length;
    return *this;
}

bool bxString::operator==(const bxString& other) const noexcept {
    return std::strcmp(c_str(), other.c_str()) == 0;
}

bxString operator+(const bxString& a, const bxString& b) {
    bxString sum = a;
    sum += b;
    return sum;
}

int bxString::find(const bxString& text, int start) const noexcept {
    return toIndex(view().find(text.view(), static_cast<std::size_t>(std::max(start, 0))));
}

int bxString::rfind(const bxString& text) const noexcept {
    return toIndex(view().rfind(text.view()));
}

bxString bxString::substr(int pos, int n) const {
    const int first = std::clamp(pos, 0, m_length);
    return bxString(view().substr(static_cast<std::size_t>(first), static_cast<std::size_t>(std::max(n, 0))));
}

int bxString::compare(const bxString& other) const noexcept {
    const auto [mine, theirs] =
        std::mismatch(view().begin(), view().end(), other.view().begin(), other.view().end());
    if (mine == view().end() || theirs == other.view().end())
        return m_length - other.m_length;
    return static_cast<signed char>(*mine) < static_cast<signed char>(*theirs) ? -1 : 1;
}

void bxString::resize(int n, char fill) {
    const auto length = static_cast<std::size_t>(std::max(n, 0));
    std::string_view kept = view().substr(0, length);
    bxString sized;
    sized.extend(static_cast<int>(length));
    copyText(sized.buffer(), kept);
    std::memset(sized.buffer() + kept.size(), fill, length - kept.size());
    sized.m_length = static_cast<int>(length);
    take(sized);
}

void bxString::trim() {
    const std::size_t first = view().find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return assign(std::string_view());
    assign(view().substr(first, view().find_last_not_of(blanks) + 1 - first));
}

bxString bxString::toLower() const {
    bxString copy = *this;
    std::transform(copy.buffer(), copy.buffer() + m_length, copy.buffer(), lowered);
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
