/** \file
 * JSON text, written piece by piece.
 */
#ifndef JSONWRITER_H
#define JSONWRITER_H

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

/**
 * Collects a JSON text. Commas and, where objects and lists span lines, indents come by themselves. "<" is
 * escaped, so that the text may stand in a script element of a page. Bytes that are no UTF-8 become U+FFFD.
 */
class JsonWriter {
  public:
    /** An object or list whose members stand on lines of their own, or all on one. */
    enum class Layout { lines, flat };

    void beginObject(Layout layout = Layout::lines) { begin('{', layout); }
    void endObject() { end('}'); }
    void beginList(Layout layout = Layout::lines) { begin('[', layout); }
    void endList() { end(']'); }
    void key(std::string_view name);

    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(double number); /**< null for what JSON has no number for */
    void value(std::same_as<bool> auto truth) { raw(truth ? "true" : "false"); }
    void value(std::integral auto number) requires(!std::same_as<decltype(number), bool>) {
        raw(std::to_string(number));
    }
    void null() { raw("null"); }

    template <class T>
    void member(std::string_view name, const T& content) {
        key(name);
        value(content);
    }
    /** A member only where there is a value. */
    template <class T>
    void member(std::string_view name, const std::optional<T>& content) {
        if (content)
            member(name, *content);
    }

    const std::string& text() const { return m_text; }

  private:
    void begin(char bracket, Layout layout);
    void end(char bracket);
    void raw(std::string_view token);
    void separate();

    std::string m_text;
    std::string m_open;  /**< one letter an open bracket: 'l' lines, 'f' flat */
    bool m_first = true; /**< the next member is its object's first */
    bool m_afterKey = false;
};

#endif
