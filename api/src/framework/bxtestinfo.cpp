#include "framework/bxtestinfo.h"

bxTestInfo::bxTestInfo(bxString text) {
    const int first = text.find("/", 0);
    if (first < 0) {
        className = text;
        return;
    }
    className = text.substr(0, first);
    const bxString rest = text.substr(first + 1);
    const int second = rest.find("/", 0);
    if (second < 0) {
        subName = rest;
        return;
    }
    subName = rest.substr(0, second);
    regKind = rest.substr(second + 1);
}
