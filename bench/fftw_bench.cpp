// The transforms of the reference library beside FFTW (single precision, ESTIMATE plans), in one run.
//
//     fftw_bench
//
// Each row sets a whole function of the library (folding, windowing, overlap and band lines included) against
// bare FFTW transforms that do its central part: an MDCT of N samples against a cosine transform of type IV
// of N/2, and against the complex transform of N/4 that both can be built on; a frame of 32 slots of a filter
// bank of M bands against 32 complex transforms of M. Clocks are the lowest of many short rounds, taken in
// turns.
#include "zorcore.h"

#include "zorac.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fftw3.h>
#include <functional>
#include <limits>
#include <memory>
#include <vector>
#include <x86intrin.h>

namespace {

using Work = std::function<void()>;

/** Clocks of one call in the best of many rounds, for each of the works; rounds alternate. */
std::vector<double> clocks(const std::vector<Work>& works) {
    constexpr int rounds = 400, callsPerRound = 16;
    std::vector<double> best(works.size(), std::numeric_limits<double>::max());
    for (int round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < works.size(); ++i) {
            const unsigned long long start = __rdtsc();
            for (int call = 0; call < callsPerRound; ++call)
                works[i]();
            best[i] = std::min(best[i], static_cast<double>(__rdtsc() - start) / callsPerRound);
        }
    return best;
}

/** Buffers and plan of FFTW transforms; `count` of them side by side. */
class Fftw {
  public:
    static Fftw cosine(int n) {
        Fftw f(n);
        f.m_plan.reset(fftwf_plan_r2r_1d(n, f.m_in.get(), f.m_out.get(), FFTW_REDFT11, FFTW_ESTIMATE));
        return f;
    }
    static Fftw complex(int n, int count = 1) {
        Fftw f(2 * n * count);
        auto* in = reinterpret_cast<fftwf_complex*>(f.m_in.get());
        auto* out = reinterpret_cast<fftwf_complex*>(f.m_out.get());
        f.m_plan.reset(fftwf_plan_many_dft(1, &n, count, in, nullptr, 1, n, out, nullptr, 1, n, FFTW_FORWARD,
                                           FFTW_ESTIMATE));
        return f;
    }
    void run() const { fftwf_execute(m_plan.get()); }

  private:
    explicit Fftw(int floats)
        : m_in(fftwf_alloc_real(static_cast<std::size_t>(floats))),
          m_out(fftwf_alloc_real(static_cast<std::size_t>(floats))) {
        for (int i = 0; i < floats; ++i)
            m_in.get()[i] = std::sin(0.1f * static_cast<float>(i));
    }
    struct Free {
        void operator()(float* p) const { fftwf_free(p); }
        void operator()(fftwf_plan_s* p) const { fftwf_destroy_plan(p); }
    };
    std::unique_ptr<float, Free> m_in, m_out;
    std::unique_ptr<fftwf_plan_s, Free> m_plan;
};

void printRow(const char* name, int size, const std::vector<double>& result, const char* others) {
    std::printf("%-28s %5d %10.0f", name, size, result[0]);
    for (std::size_t i = 1; i < result.size(); ++i)
        std::printf(" %10.0f %6.2f", result[i], result[0] / result[i]);
    std::printf("   %s\n", others);
}

std::vector<float> samples(std::size_t count) {
    std::vector<float> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = std::sin(0.1f * static_cast<float>(i));
    return values;
}

void benchMdct(int len) {
    ZorsMDCTFwdState_32f* forward = nullptr;
    ZorsMDCTInvState_32f* inverse = nullptr;
    int size = 0;
    zorsMDCTFwdInitAlloc_32f(&forward, len);
    zorsMDCTInvInitAlloc_32f(&inverse, len);
    zorsMDCTFwdGetBufSize_32f(forward, &size);
    std::vector<Zor8u> buffer(static_cast<std::size_t>(size));
    const auto in = samples(static_cast<std::size_t>(len));
    std::vector<float> out(in.size());
    const Fftw cosine = Fftw::cosine(len / 2), complex = Fftw::complex(len / 4);
    const Work onFftw[] = {[&] { cosine.run(); }, [&] { complex.run(); }};
    printRow("MDCT forward", len,
             clocks({[&] { zorsMDCTFwd_32f(in.data(), out.data(), forward, buffer.data()); }, onFftw[0],
                     onFftw[1]}),
             "DCT-IV of N/2; complex of N/4");
    printRow("MDCT inverse", len,
             clocks({[&] { zorsMDCTInv_32f(in.data(), out.data(), inverse, buffer.data()); }, onFftw[0],
                     onFftw[1]}),
             "DCT-IV of N/2; complex of N/4");
    zorsMDCTFwdFree_32f(forward);
    zorsMDCTInvFree_32f(inverse);
}

constexpr int slots = 32;

/** Lines of 64 bands for a frame. */
struct Bands {
    std::vector<float> floats = samples(slots * 64);
    std::vector<Zor32fc> pairs;
    std::vector<float*> re, im;
    std::vector<Zor32fc*> pairList;

    Bands() : pairs(slots * 64, Zor32fc{0.5f, 0.25f}) {
        for (int slot = 0; slot < slots; ++slot) {
            re.push_back(floats.data() + 64 * slot);
            im.push_back(floats.data() + 64 * slot);
            pairList.push_back(pairs.data() + 64 * slot);
        }
    }
};

/** A filter's state in memory of its own. */
template <class State>
struct Filter {
    std::vector<Zor8u> memory;
    State* state = nullptr;
    Filter(ZorStatus (*getSize)(int*), ZorStatus (*init)(State**, Zor8u*)) {
        int size = 0;
        getSize(&size);
        memory.resize(static_cast<std::size_t>(size));
        init(&state, memory.data());
    }
};

void benchQmf() {
    Bands bands;
    const auto in = samples(slots * 32);
    std::vector<float> out(slots * 64);
    const Filter analysis(zorsAnalysisFilterGetSize_SBR_RToC_32f32fc,
                          zorsAnalysisFilterInit_SBR_RToC_32f32fc);
    const Filter analysisReal(zorsAnalysisFilterGetSize_SBR_RToR_32f, zorsAnalysisFilterInit_SBR_RToR_32f);
    const Filter synthesis(zorsSynthesisFilterGetSize_SBR_CToR_32fc32f,
                           zorsSynthesisFilterInit_SBR_CToR_32fc32f);
    const Filter down(zorsSynthesisDownFilterGetSize_SBR_CToR_32fc32f,
                      zorsSynthesisDownFilterInit_SBR_CToR_32fc32f);
    const Fftw of32 = Fftw::complex(32, slots), of64 = Fftw::complex(64, slots);
    const auto row = [&](const char* name, int width, Work work) {
        const Fftw& fftw = width == 32 ? of32 : of64;
        printRow(name, width, clocks({std::move(work), [&] { fftw.run(); }}), "complex of M, 32 slots");
    };
    row("QMF analysis, complex", 32, [&] {
        zorsAnalysisFilter_SBR_RToC_32f32fc_D2L(in.data(), bands.pairList.data(), slots, analysis.state);
    });
    row("QMF analysis, real", 32,
        [&] { zorsAnalysisFilter_SBR_RToR_32f_D2L(in.data(), bands.re.data(), slots, analysisReal.state); });
    row("QMF synthesis, complex", 64, [&] {
        zorsSynthesisFilter_SBR_CToR_32fc32f_D2L(bands.pairList.data(), out.data(), slots, synthesis.state);
    });
    row("QMF down-sampled synthesis", 32, [&] {
        zorsSynthesisDownFilter_SBR_CToR_32fc32f_D2L(bands.pairList.data(), out.data(), slots, down.state);
    });
}

} // namespace

int main() {
    static constexpr struct {
        int cpuType;
        const char* name;
    } paths[] = {{zorCpuUnknown, "portable"}, {zorCpuSSE2, "SSE2"}, {zorCpuAVX, "AVX"}, {zorCpuAVX2, "AVX2"}};
    for (const auto& path : paths) {
        if (zorInitCpu(path.cpuType) < 0)
            continue;
        std::printf("\nCode path %s, clocks per call; FFTW chooses its own\n", path.name);
        std::printf("%-28s %5s %10s %10s %6s %10s %6s\n", "function", "size", "library", "FFTW", "ratio",
                    "FFTW", "ratio");
        for (const int len : {1024, 2048, 4096})
            benchMdct(len);
        benchQmf();
    }
}
