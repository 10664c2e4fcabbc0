#include "kernels.h"

#include "chains.h"
#include "kv.h"

#include <utility>
#include <vector>

namespace {

/** Costs of a call, in core clocks. */
template <int... clocks>
using Costs = std::integer_sequence<int, clocks...>;
using Additions =
    Costs<1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 30, 100, 300, 1000, 3000>;
using Multiplications = Costs<3, 6, 9, 12, 15, 18, 30, 300, 3000>;

/** A library function, and the values of the parameters that it is measured with: all, where none are given.
 */
struct LibraryKernel {
    const char* function;
    const char* values;
};
constexpr LibraryKernel libraryKernels[] = {
    {"zorsMDCTFwd_32f", ""},
    {"zorsDecodeTNS_AAC_32s_I", " long 12"},
    {"zorsSynthesisFilter_SBR_CToR_32fc32f_D2L", " 1024"},
    {"zorsHuffmanDecode_MP3_1u32s", " MPEG-1 long 576 ESC"},
};

std::vector<Kernel>& chains() {
    static std::vector<Kernel> list;
    return list;
}

/** "add_0016" or "mul_0018". */
template <Link link>
constexpr auto chainName(int clocks) {
    char text[] = "xxx_0000";
    for (int i = 0; i < 3; ++i)
        text[i] = (link == Link::addition ? "add" : "mul")[i];
    for (int i = 7; clocks > 0; clocks /= 10)
        text[i--] = static_cast<char>('0' + clocks % 10);
    return kv::FunctionName(text);
}

template <int (*call)()>
void peerLoop(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        call();
}

template <Link link, int clocks>
void registerChain() {
    constexpr auto name = chainName<link>(clocks);
    constexpr auto call = chain<link, clocks / static_cast<int>(link)>;
    kv::registerTest<kvTest, name, call>(__FILE__, "kvTest//KV_REG");
    chains().push_back({*std::prev(pTestList->end()), name.text, clocks, peerLoop<call>});
}

template <Link link, int... clocks>
void registerChains(Costs<clocks...>) {
    (registerChain<link, clocks>(), ...);
}

/** Produces the combinations of a test as a run does. */
void forEachCombination(bxTest& test, const std::string& values,
                        const std::function<void(const Kernel&)>& measure) {
    kvVector::m_seed = 7;
    std::srand(7);
    test.beginTest();
    test.canStart();
    while (test.canContinue()) {
        test.firstIteration = false;
        bxTest::m_vectorNum = bxTest::m_vectorShift = 0;
        std::string now;
        for (const bxParameter* parm : test.parms)
            now += std::string(" ") + parm->valueString().c_str();
        if ((values.empty() || now == values) && test.initData())
            measure({&test, test.name.c_str() + now});
        test.flushData();
    }
    test.flushStart();
    test.endTest();
}

} // namespace

void registerChains() {
    registerChains<Link::addition>(Additions());
    registerChains<Link::multiplication>(Multiplications());
}

void forEachKernel(const std::function<void(const Kernel&)>& measure) {
    for (const Kernel& kernel : chains())
        measure(kernel);
    for (const LibraryKernel& kernel : libraryKernels)
        for (bxTest* test : *pTestList)
            if (test->name == kernel.function)
                forEachCombination(*test, kernel.values, measure);
}
