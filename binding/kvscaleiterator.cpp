#include "kvscaleiterator.h"

bool kvScaleIterator::isScaled(const kvFunc& func) const {
    const bxString descr = func.descrName();
    return descr.find("Sfs", 0) >= 0 || (name().length() > 0 && descr.find(bxString("Fix") + name(), 0) >= 0);
}

void kvScaleIterator::init(const bxString& funcName) {
    m_scaled = isScaled(kvFunc(funcName));
    if (m_scaled)
        setValues("ScaleFactor", {0, 1, 2, -1});
    else
        setValues("", {0});
}

void kvScaleIterator::setValues(const char* newName, std::initializer_list<int> values) {
    reset();
    setName(newName);
    setPrompt(newName);
    for (const int value : values)
        add(value);
}
