#include "parameters/bxdatalist.h"

void bxDataList::set(bxString text) {
    bxString name, value;
    text.parse(name, value, "=");
    set(name, value);
}

void bxDataList::set(bxString name, bxString value) {
    name.trim();
    value.trim();
    if (name.empty())
        return;
    const iterator old = find(name);
    if (old != end())
        remove(old);
    append(bxData{name, value});
}

bool bxDataList::get(bxString name, bxString& value) {
    const iterator place = find(name);
    if (place == end())
        return false;
    value = place->value;
    return true;
}
