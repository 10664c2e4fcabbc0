#include "kvmeasureparm.h"

namespace kv {

namespace {

template <class T, class Parameter>
void addAll(Parameter& parameter, const Parm<T>& said) {
    for (const T& value : said.values)
        parameter.add(value);
}

} // namespace

LiveParm<Parm<int>>::LiveParm(const Parm<int>& said) : m_parm(0, said.name, ""), m_size(said.size) {
    if (said.range.empty())
        addAll(m_parm, said);
    else
        m_parm.translate(said.range);
}

LiveParm<Parm<double>>::LiveParm(const Parm<double>& said) : m_parm(0, said.name, "") {
    addAll(m_parm, said);
}

LiveParm<Parm<bxString>>::LiveParm(const Parm<bxString>& said) : m_parm("", said.name, "") {
    addAll(m_parm, said);
}

LiveParm<Parm<bool>>::LiveParm(const Parm<bool>& said) : NamedPlaces(said.name) {
    allow(0, "no");
    allow(1, "yes");
    for (const bool value : said.values)
        add(value);
}

} // namespace kv
