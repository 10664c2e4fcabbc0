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
    remove(name);
    append(name, value);
}

bool bxDataList::get(bxString name, bxString& value) {
    const iterator place = find(name);
    if (place == end())
        return false;
    value = place->value;
    return true;
}

std::optional<bxGiven> bxDataList::valueOf(const bxQuestion& question) {
    const iterator place = find(question.name);
    if (place == end())
        return std::nullopt;
    place->asked = true;
    return bxGiven{place->value.empty() ? question.deflt : place->value, bxGiven::fromDataKey, "from -d"};
}
