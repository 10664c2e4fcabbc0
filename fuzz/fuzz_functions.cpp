// Function names: taking them apart, and the order of tests.
#include "foundation/bxlist.h"
#include "fuzzinput.h"
#include "kvfunc.h"

#include <array>

namespace {

/** A test, as the list of tests sorts it. */
struct Entry {
    kvFunc name;
    std::size_t number = 0; // in the order of registration
};

bool comesFirst(Entry& a, Entry& b) {
    return a.name.compare(b.name) < 0;
}

int sign(int n) {
    return (n > 0) - (n < 0);
}

/** A name of the form that the suites' functions have: base, types, one descriptor. */
std::string suiteName(FuzzedDataProvider& input) {
    static constexpr std::array bases{"zorsCopy", "zorsMDCTFwd", "zorsMDCTInv_AAC",
                                      "zorsMDCT", "zoriAdd",     "zorsVQ"};
    static constexpr std::array types{"8u",   "16s",  "32s",    "32f",   "64f",
                                      "32sc", "32fc", "16s32f", "1u32s", "32f32fc"};
    static constexpr std::array descriptors{"", "_I", "_D2L", "_Sfs", "_ISfs", "_C1R", "_C3R", "_C4IR", "_R"};
    return std::string(input.PickValueInArray(bases)) + "_" + input.PickValueInArray(types) +
           input.PickValueInArray(descriptors);
}

void takesApart(const kvFunc& name) {
    bxString base, types, descriptor;
    name.parseFunction(base, types, descriptor);
    require(name.baseName() == base && name.typeName() == types && name.descrName() == descriptor,
            "the parts are the same together and one by one");
    require(name.length() >= base.length() + types.length() + descriptor.length(),
            "parts are parts of the name");
    for (const bxString& part : {base, types, descriptor})
        require(part.empty() || name.find(part) >= 0, "a part stands in the name");
    for (int n = 0; n <= 5; ++n) {
        const kvType type = name.type(n);
        require(type == kvUndef || kvFunc::stringToType(kvFunc::typeToString(type)) == type,
                "a type has a name");
        name.channelsName(n);
        name.channels(n);
        name.plane(n);
        name.alpha(n);
    }
    require(name.type(5) == kvUndef, "there are four types at most");
    name.inplace(), name.mask(), name.scale(), name.roi(), name.coi();
    require(name.compare(name) == 0, "a name is not before itself");
}

/** Sorting ends, keeps all, and keeps the order of equal names, whatever the names. */
bxList<Entry> sorted(const std::vector<std::string>& names) {
    bxList<Entry> list;
    for (const std::string& name : names)
        list.insert(list.end(), Entry{kvFunc(toText(name)), static_cast<std::size_t>(list.size())});
    list.sort(comesFirst);
    require(static_cast<std::size_t>(list.size()) == names.size(), "sorting keeps the number of tests");
    std::vector<bool> seen(names.size());
    std::vector<const Entry*> order;
    for (const Entry& entry : list) {
        require(entry.number < names.size() && !seen[entry.number], "sorting keeps every test once");
        require(entry.name == toText(names[entry.number]), "a test keeps its name");
        seen[entry.number] = true;
        for (const Entry* before : order)
            require(!(before->name == entry.name) || before->number < entry.number,
                    "equal names keep their order");
        order.push_back(&entry);
    }
    return list;
}

/** On names of the suites' form the order is a strict weak order, and the list is sorted by it. */
void isWeakOrder(const bxList<Entry>& list) {
    for (auto a = list.begin(); a != list.end(); ++a) {
        for (auto b = list.begin(); b != list.end(); ++b) {
            require(sign(a->name.compare(b->name)) == -sign(b->name.compare(a->name)),
                    "the order is antisymmetric");
            for (auto c = list.begin(); c != list.end(); ++c)
                require(a->name.compare(b->name) > 0 || b->name.compare(c->name) > 0 ||
                            a->name.compare(c->name) <= 0,
                        "the order is transitive");
        }
    }
    const Entry* before = nullptr;
    for (const Entry& entry : list) {
        require(!before || before->name.compare(entry.name) <= 0, "the list is sorted");
        before = &entry;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    std::vector<std::string> names;
    if (input.ConsumeBool()) {
        const auto count = input.ConsumeIntegralInRange<std::size_t>(0, 8);
        while (names.size() < count)
            names.push_back(suiteName(input));
        isWeakOrder(sorted(names));
    } else {
        names = split(input.ConsumeRemainingBytesAsString(), '\n');
        names.resize(std::min<std::size_t>(names.size(), 24));
        for (const std::string& name : names)
            takesApart(kvFunc(toText(name)));
        sorted(names);
    }
    return 0;
}
