/** \file
 * Text of the harness, with the conversions between text and numbers.
 */
#ifndef BXSTRING_H
#define BXSTRING_H

#include <concepts>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

class bxStringList;

/**
 * A text. Crosses interfaces by value; implicit from `const char*` (null counts as empty) and `char`.
 * Conversions from text to a value never throw: they set the flag that failed() shows, and leave the value
 * alone. Nothing else touches that flag, copies and assignments included.
 */
class bxString {
  public:
    bxString() = default;
    bxString(const char* text) : m_text(text ? text : "") {}
    bxString(char c) : m_text(1, c) {}
    explicit bxString(std::string_view text) : m_text(text) {}
    explicit bxString(std::string&& text) noexcept : m_text(std::move(text)) {}
    bxString(const bxString&) = default;
    bxString(bxString&&) noexcept = default;
    /** A number is no text: append it with `<<`. */
    template <class T>
    requires((std::is_arithmetic_v<T> || std::is_enum_v<T>)&&!std::same_as<T, char>) bxString(T)
    = delete;
    virtual ~bxString() = default;

    bxString& operator=(const bxString&) = default;
    bxString& operator=(bxString&&) noexcept = default;
    void assign(const bxString& other) { m_text = other.m_text; }
    void assign(const char* text) { m_text = text ? text : ""; }
    void assign(std::string_view text) { m_text = text; }
    void assign(char c) { m_text.assign(1, c); }

    const char* c_str() const noexcept { return m_text.c_str(); }
    std::string_view view() const noexcept { return m_text; }
    int length() const noexcept { return static_cast<int>(m_text.size()); }
    bool empty() const noexcept { return m_text.empty(); }
    /** The character at an index from 0 to length(); the one at length() is NUL. */
    char operator[](int index) const noexcept { return m_text.c_str()[index]; }

    /** True when the last conversion from this text to a value could not read it. */
    bool failed() const noexcept { return m_failed.on; }
    /** For conversions, which may be given a constant text. */
    void setFailed(bool failed) const noexcept { m_failed.on = failed; }

    bxString& operator+=(const bxString& text) { return append(text.m_text); }
    /** Compares up to the first NUL. */
    bool operator==(const bxString& other) const noexcept;

    /** Index of the first occurrence at or after `start`, -1 if none. */
    int find(const bxString& text, int start = 0) const noexcept;
    /** Index of the last occurrence, -1 if none; the length for an empty text. */
    int rfind(const bxString& text) const noexcept;
    bxString substr(int pos) const { return substr(pos, length()); }
    /** At most n characters from `pos`. */
    bxString substr(int pos, int n) const;
    /** -1 or 1 by the first differing (signed) byte; the difference of the lengths where one text begins the
     * other. */
    int compare(const bxString& other) const noexcept;
    /** Cuts the text to n characters, or extends it with `fill`. */
    void resize(int n, char fill);
    /** Removes spaces, tabs and carriage returns at both ends. */
    void trim();
    /** A copy with A to Z lowered; other bytes stay. */
    bxString toLower() const;

    /** What follows the last '/' or '\\'. */
    bxString getFileName() const;
    /** What goes up to and including the last '/' or '\\'; may be empty. */
    bxString getFileDir() const;
    /** The file name without its last '.' and what follows it. */
    bxString getFileTitle() const;

    /** Splits into words (see bxParse); returns the number of words in the text, which may exceed the
     * outputs. */
    int parse(bxStringList& words, const bxString& separators) const;
    int parse(bxString& w1, bxString& w2, const bxString& separators) const;
    int parse(bxString& w1, bxString& w2, bxString& w3, const bxString& separators) const;

    /** The length modifier of 64-bit integers in format strings. */
    static const char* prefixI64() noexcept { return "L"; }

    /** The names of all entries that share a bit with the value, joined by '|'; the number if there is none.
     */
    static bxString flagString(int value, const int* flags, const bxString* names, int n);
    /**
     * The flags of all words of the text (separated by any of "|,; "). A word stands for the first name that
     * it fits (see fitString); one that fits none sets text.failed(), and the others still count.
     */
    static int flagValue(const bxString& text, const int* flags, const bxString* names, int n, int skip);
    /** The name of the first entry with this value; the number if there is none. */
    static bxString enumString(int value, const int* values, const bxString* names, int n);
    /** The value of the first name that the text fits; none sets text.failed() and gives 0. */
    static int enumValue(const bxString& text, const int* values, const bxString* names, int n, int skip);

    /** \name Value into text: appends
     * @{ */
    bxString& operator<<(const bxString& text) { return append(text.m_text); }
    bxString& operator<<(const char* text) {
        return append(text ? std::string_view(text) : std::string_view());
    }
    bxString& operator<<(char c) { return append(std::string_view(&c, 1)); }
    /** "yes" or "no". */
    bxString& operator<<(bool value) { return append(value ? "yes" : "no"); }
    bxString& operator<<(int value) { return appendSigned(value); }
    bxString& operator<<(long long value) { return appendSigned(value); }
    /** In format "%.3g". */
    bxString& operator<<(double value);
    bxString& operator<<(float value) { return *this << static_cast<double>(value); }
    /** "NULL", or the address as a signed number widened to 64 bits, in upper-case hexadecimal digits. */
    bxString& operator<<(const void* address);
    /** All other integers, in decimal. */
    template <std::integral T>
    bxString& operator<<(T value) {
        if constexpr (std::is_signed_v<T>)
            return appendSigned(value);
        else
            return appendUnsigned(value);
    }
    /** @} */

  private:
    /** A flag that keeps its own state when texts are copied and assigned. */
    struct Flag {
        Flag() = default;
        Flag(const Flag&) noexcept {}
        Flag& operator=(const Flag&) noexcept { return *this; }
        ~Flag() = default;
        bool on = false;
    };

    bxString& append(std::string_view text) {
        m_text.append(text);
        return *this;
    }
    bxString& appendSigned(long long value);
    bxString& appendUnsigned(unsigned long long value);

    std::string m_text;
    mutable Flag m_failed;
};

/** A new text of the summed length. */
bxString operator+(const bxString& a, const bxString& b);

/**
 * \name Text into value: reads
 * Each sets or clears text.failed(). A text without anything to scan leaves the number as it is and does not
 * fail.
 * @{ */
/** Decimal, or hexadecimal after "0x". */
int& operator<<(int& value, const bxString& text);
long long& operator<<(long long& value, const bxString& text);
double& operator<<(double& value, const bxString& text);
float& operator<<(float& value, const bxString& text);
/** Yes, true and 1 in any case against no, false and 0; the first letter is enough. All else is false and
 * fails. */
bool& operator<<(bool& value, const bxString& text);
/** @} */

/** True if `word`, ignoring case, begins `name` or begins what remains of `name` after its first `skip`
 * characters. */
bool fitString(const bxString& word, const bxString& name, int skip);

#endif
