#include "parameters/bxtextform.h"

bxString bxTextForm<int>::toText(int value) {
    return bxString() << value;
}

int bxTextForm<int>::fromText(bxString& text) {
    int value = 0;
    value << text;
    return value;
}

bxString bxTextForm<ZoriSize>::toText(ZoriSize value) {
    return bxString() << value.width << "x" << value.height;
}

ZoriSize bxTextForm<ZoriSize>::fromText(bxString& text) {
    bxString width, height;
    const int words = text.parse(width, height, "xX");
    if (words == 1)
        height = width;
    ZoriSize value{0, 0};
    value.width << width;
    value.height << height;
    text.setFailed(words > 2 || width.failed() || height.failed());
    return text.failed() ? ZoriSize{0, 0} : value;
}
