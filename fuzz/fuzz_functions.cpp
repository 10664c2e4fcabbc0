// Function names: taking them apart, and the order of tests.
#include "framework/bxtestlist.h"
#include "fuzzinput.h"
#include "kvtest.h"

#include <array>
#include <map>
#include <memory>

namespace {

/** Tests of functions with these names, sorted; `names` are in the order of registration. */
struct Tests {
    explicit Tests(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            owned.push_back(
                std::make_unique<kvTest>(nullptr, nullptr, nullptr, nullptr, toText(name), "", ""));
            list.push_back(owned.back().get());
        }
        list.sortFunc();
    }
    std::vector<std::unique_ptr<kvTest>> owned;
    bxTestList list;
};

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
void keepsAll(const Tests& tests) {
    std::map<const bxTest*, std::size_t> number;
    for (const auto& test : tests.owned)
        number.emplace(test.get(), number.size());
    require(static_cast<std::size_t>(tests.list.size()) == tests.owned.size(),
            "sorting keeps the number of tests");
    std::map<std::string_view, std::size_t> next; // least number that an equal name may have
    for (const bxTest* test : tests.list) {
        std::size_t& least = next[test->name.view()];
        require(number.at(test) >= least, "equal names keep their order, every test stands there once");
        least = number.at(test) + 1;
    }
}

/** On names of the suites' form the order is a strict weak order, and the list is sorted by it. */
void isWeakOrder(const bxTestList& list) {
    for (const bxTest* a : list) {
        for (const bxTest* b : list) {
            require(sign(a->compareFunc(b)) == -sign(b->compareFunc(a)), "the order is antisymmetric");
            for (const bxTest* c : list)
                require(a->compareFunc(b) > 0 || b->compareFunc(c) > 0 || a->compareFunc(c) <= 0,
                        "the order is transitive");
        }
    }
    const bxTest* before = nullptr;
    for (const bxTest* test : list) {
        require(!before || before->compareFunc(test) <= 0, "the list is sorted");
        before = test;
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
        const Tests tests(names);
        keepsAll(tests);
        isWeakOrder(tests.list);
    } else {
        names = split(input.ConsumeRemainingBytesAsString(), '\n');
        names.resize(std::min<std::size_t>(names.size(), 24));
        for (const std::string& name : names)
            takesApart(kvFunc(toText(name)));
        keepsAll(Tests(names));
    }
    return 0;
}
