/** \file
 * JSON text with one element of a list a line.
 */
#ifndef JSON_H
#define JSON_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/** Members keep the order in which they were added. */
using Json = nlohmann::ordered_json;

/** A number, without a point where it is whole. */
Json jsonNumber(double number);

/** Adds a member where there is a value. */
inline void addKnown(Json& object, const char* name, const std::optional<double>& number) {
    if (number)
        object[name] = jsonNumber(*number);
}

/**
 * An object written member by member, so that long lists are never held as values. "<" is escaped: the text
 * may stand in a script element of a page. Bytes that are no UTF-8 become U+FFFD, numbers that JSON has none
 * for null.
 */
class JsonText {
  public:
    void add(std::string_view name, const Json& value);
    /** Adds a list: what `make` makes of each element of the range. */
    template <class Range, class Make>
    void addList(std::string_view name, const Range& range, Make make) {
        beginMember(name);
        m_text += "[";
        const char* separator = "\n";
        for (const auto& element : range) {
            m_text += std::exchange(separator, ",\n");
            append(make(element));
        }
        m_text += "]";
    }
    /** The whole object. */
    std::string text() const { return m_text + "\n}\n"; }

  private:
    void beginMember(std::string_view name);
    void append(const Json& value);

    std::string m_text = "{";
};

#endif
