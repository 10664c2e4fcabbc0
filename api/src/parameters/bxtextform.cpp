#include "parameters/bxtextform.h"

#include <charconv>

bxString bxTextForm<int>::toText(int value) {
    return bxString() << value;
}

bxReading<int> bxTextForm<int>::read(const bxString& text) {
    return bxReadInt(text);
}

bxString bxTextForm<double>::toText(double value) {
    char text[32];
    return bxString(std::string_view(text, std::to_chars(text, text + sizeof text, value).ptr));
}

bxReading<double> bxTextForm<double>::read(const bxString& text) {
    return bxReadDouble(text);
}

bxString bxTextForm<ZoriSize>::toText(ZoriSize value) {
    return bxString() << value.width << "x" << value.height;
}

bxReading<ZoriSize> bxTextForm<ZoriSize>::read(const bxString& text) {
    bxString widthText, heightText;
    const int words = text.parse(widthText, heightText, "xX");
    const bxReading<int> width = bxReadInt(widthText);
    const bxReading<int> height = words == 1 ? width : bxReadInt(heightText);
    if (words > 2 || !width.good || !height.good)
        return {{0, 0}, false, false};
    return {{width.value, height.value}, true, width.whole && height.whole};
}
