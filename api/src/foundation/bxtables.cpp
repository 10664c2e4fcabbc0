/** \file
 * Conversions between names and the values or flags of a table.
 */
#include "foundation/bxstring.h"
#include "foundation/bxstringlist.h"

#include <algorithm>

namespace {

/** Index of the first name that a word fits; n if there is none. */
int findName(const bxString& word, const bxString* names, int n, int skip) {
    const auto fits = [&](const bxString& name) { return fitString(word, name, skip); };
    return static_cast<int>(std::find_if(names, names + n, fits) - names);
}

bxString numberText(int value) {
    return bxString() << value;
}

} // namespace

bxString bxString::flagString(int value, const int* flags, const bxString* names, int n) {
    bxString text;
    for (int i = 0; i < n; ++i) {
        if ((flags[i] & value) == 0)
            continue;
        if (!text.empty())
            text << '|';
        text << names[i];
    }
    return text.empty() ? numberText(value) : text;
}

int bxString::flagValue(const bxString& text, const int* flags, const bxString* names, int n, int skip) {
    bxStringList words;
    text.parse(words, "|,; ");
    text.setFailed(false);
    int value = 0;
    for (const bxString& word : words) {
        const int i = findName(word, names, n, skip);
        if (i < n)
            value |= flags[i];
        else
            text.setFailed(true);
    }
    return value;
}

bxString bxString::enumString(int value, const int* values, const bxString* names, int n) {
    const auto i = std::find(values, values + n, value) - values;
    return i < n ? names[i] : numberText(value);
}

int bxString::enumValue(const bxString& text, const int* values, const bxString* names, int n, int skip) {
    const int i = findName(text, names, n, skip);
    text.setFailed(i == n);
    return i < n ? values[i] : 0;
}
