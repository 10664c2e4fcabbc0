/** \file
 * Text forms of the plain value types that parameters hold.
 */
#ifndef BXTEXTFORM_H
#define BXTEXTFORM_H

#include "foundation/bxreading.h"
#include "zortypes.h"

/** How a plain value is written and read, and which texts are values, in words. A blank text is a zero. */
template <class T>
struct bxTextForm;

/** Decimal, or hexadecimal after 0x when read. */
template <>
struct bxTextForm<int> {
    static constexpr char allowed[] = "whole numbers from -2147483648 to 2147483647";
    static bxString toText(int value);
    static bxReading<int> read(const bxString& text);
};

/** As short as reads back to the same value, for example 0.1 or 1e-06. */
template <>
struct bxTextForm<double> {
    static constexpr char allowed[] = "numbers as 1.5 or 1e-3";
    static bxString toText(double value);
    static bxReading<double> read(const bxString& text);
};

/** Any text; in a list without ";" and blanks at its ends. */
template <>
struct bxTextForm<bxString> {
    static constexpr char allowed[] = "any text";
    static bxString toText(const bxString& value) { return value; }
    static bxReading<bxString> read(const bxString& text) { return {text}; }
};

/** "WIDTHxHEIGHT", for example 64x48; one number alone is a square. */
template <>
struct bxTextForm<ZoriSize> {
    static constexpr char allowed[] = "sizes as 64x48, or one number for a square";
    static bxString toText(ZoriSize value);
    static bxReading<ZoriSize> read(const bxString& text);
};

inline bool operator==(const ZoriSize& a, const ZoriSize& b) {
    return a.width == b.width && a.height == b.height;
}

/** Gives a parameter class a plain text form. */
template <class T, class Base>
class bxWithTextForm : public Base {
  public:
    using Base::Base;
    bxString valueToString(T value) const override { return bxTextForm<T>::toText(value); }
    T stringToValue(bxString& text) const override {
        bxReading<T> reading = bxTextForm<T>::read(text);
        reading.good = reading.good && this->isAllowed(reading.value);
        return bxTell(text, reading);
    }
    bool readsWhole(const bxString& text) const override { return bxTextForm<T>::read(text).whole; }

  protected:
    bxString allowedText() const override {
        const bxString valid = this->validString();
        return valid.empty() ? bxString(bxTextForm<T>::allowed) : valid;
    }
};

#endif
