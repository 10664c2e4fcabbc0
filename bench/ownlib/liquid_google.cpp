// The same twelve functions with Google Benchmark.
#include <benchmark/benchmark.h>

#include <complex>
#include <cstdint>
#include <liquid/liquid.h>
#include <random>
#include <vector>
#include <xmmintrin.h>

namespace {

/** Uniform noise from -1 to 1. */
template <class T>
std::vector<T> noise(std::int64_t length) {
    static std::minstd_rand generator(7);
    std::uniform_real_distribution<float> uniform(-1, 1);
    std::vector<T> values(static_cast<std::size_t>(length));
    for (T& value : values)
        if constexpr (std::is_same_v<T, float>)
            value = uniform(generator);
        else if constexpr (std::is_same_v<T, unsigned char>)
            value = static_cast<T>(generator() % 256);
        else
            value = {uniform(generator), uniform(generator)};
    return values;
}

using Samples = std::vector<std::complex<float>>;

void firfilt_rrrf_execute_block_(benchmark::State& state) {
    const auto taps = static_cast<unsigned>(state.range(0)), length = static_cast<unsigned>(state.range(1));
    std::vector<float> h = noise<float>(taps), x = noise<float>(length), y(length);
    firfilt_rrrf q = firfilt_rrrf_create(h.data(), taps);
    for (auto _ : state)
        firfilt_rrrf_execute_block(q, x.data(), length, y.data());
    firfilt_rrrf_destroy(q);
}
BENCHMARK(firfilt_rrrf_execute_block_)->ArgsProduct({{16, 64}, {256, 1024}});

void firfilt_crcf_execute_block_(benchmark::State& state) {
    const auto taps = static_cast<unsigned>(state.range(0)), length = static_cast<unsigned>(state.range(1));
    Samples x = noise<std::complex<float>>(length), y(length);
    firfilt_crcf q = firfilt_crcf_create_kaiser(taps, 0.2f, 60, 0);
    for (auto _ : state)
        firfilt_crcf_execute_block(q, x.data(), length, y.data());
    firfilt_crcf_destroy(q);
}
BENCHMARK(firfilt_crcf_execute_block_)->ArgsProduct({{16, 64}, {256, 1024}});

void iirfilt_crcf_execute_block_(benchmark::State& state) {
    const auto order = static_cast<unsigned>(state.range(0)), length = static_cast<unsigned>(state.range(1));
    Samples x = noise<std::complex<float>>(length), y(length);
    iirfilt_crcf q = iirfilt_crcf_create_lowpass(order, 0.1f);
    for (auto _ : state)
        iirfilt_crcf_execute_block(q, x.data(), length, y.data());
    iirfilt_crcf_destroy(q);
}
BENCHMARK(iirfilt_crcf_execute_block_)->ArgsProduct({{3, 7}, {1024}});

void resamp_crcf_execute_block_(benchmark::State& state) {
    const auto length = static_cast<unsigned>(state.range(1));
    Samples x = noise<std::complex<float>>(length), y(2 * length);
    unsigned written = 0;
    resamp_crcf q = resamp_crcf_create_default(static_cast<float>(state.range(0)) / 10);
    for (auto _ : state)
        resamp_crcf_execute_block(q, x.data(), length, y.data(), &written);
    resamp_crcf_destroy(q);
}
BENCHMARK(resamp_crcf_execute_block_)->ArgsProduct({{5, 12}, {1024}}); // tenths

void dotprod_rrrf_execute_(benchmark::State& state) {
    const auto length = static_cast<unsigned>(state.range(0));
    std::vector<float> h = noise<float>(length), x = noise<float>(length);
    float y = 0;
    dotprod_rrrf q = dotprod_rrrf_create(h.data(), length);
    for (auto _ : state)
        dotprod_rrrf_execute(q, x.data(), &y);
    dotprod_rrrf_destroy(q);
}
BENCHMARK(dotprod_rrrf_execute_)->Arg(64)->Arg(1024);

void dotprod_crcf_execute_(benchmark::State& state) {
    const auto length = static_cast<unsigned>(state.range(0));
    std::vector<float> h = noise<float>(length);
    Samples x = noise<std::complex<float>>(length), y(1);
    dotprod_crcf q = dotprod_crcf_create(h.data(), length);
    for (auto _ : state)
        dotprod_crcf_execute(q, x.data(), y.data());
    dotprod_crcf_destroy(q);
}
BENCHMARK(dotprod_crcf_execute_)->Arg(64)->Arg(1024);

void fft_execute_(benchmark::State& state) {
    const auto size = static_cast<unsigned>(state.range(0));
    Samples x = noise<std::complex<float>>(size), y(size);
    fftplan q = fft_create_plan(size, x.data(), y.data(), LIQUID_FFT_FORWARD, 0);
    for (auto _ : state)
        fft_execute(q);
    fft_destroy_plan(q);
}
BENCHMARK(fft_execute_)->Arg(64)->Arg(1000)->Arg(1024);

void nco_crcf_mix_block_down_(benchmark::State& state) {
    const auto length = static_cast<unsigned>(state.range(0));
    Samples x = noise<std::complex<float>>(length), y(length);
    nco_crcf q = nco_crcf_create(LIQUID_NCO);
    nco_crcf_set_frequency(q, 0.3f);
    for (auto _ : state)
        nco_crcf_mix_block_down(q, x.data(), y.data(), length);
    nco_crcf_destroy(q);
}
BENCHMARK(nco_crcf_mix_block_down_)->Arg(1024);

void agc_crcf_execute_block_(benchmark::State& state) {
    const auto length = static_cast<unsigned>(state.range(0));
    Samples x = noise<std::complex<float>>(length), y(length);
    agc_crcf q = agc_crcf_create();
    for (auto _ : state)
        agc_crcf_execute_block(q, x.data(), length, y.data());
    agc_crcf_destroy(q);
}
BENCHMARK(agc_crcf_execute_block_)->Arg(1024);

void modemcf_demodulate_(benchmark::State& state) {
    const auto scheme = static_cast<modulation_scheme>(state.range(0));
    Samples x = noise<std::complex<float>>(1);
    unsigned symbol = 0;
    modemcf q = modemcf_create(scheme);
    for (auto _ : state)
        modemcf_demodulate(q, x[0], &symbol);
    modemcf_destroy(q);
}
BENCHMARK(modemcf_demodulate_)->Arg(LIQUID_MODEM_QPSK)->Arg(LIQUID_MODEM_QAM64);

void crc_generate_key_(benchmark::State& state) {
    const auto length = static_cast<unsigned>(state.range(0));
    const auto scheme = static_cast<crc_scheme>(state.range(1));
    std::vector<unsigned char> message = noise<unsigned char>(length);
    for (auto _ : state)
        benchmark::DoNotOptimize(crc_generate_key(scheme, message.data(), length));
}
BENCHMARK(crc_generate_key_)->ArgsProduct({{64, 1024}, {LIQUID_CRC_16, LIQUID_CRC_32}});

void liquid_firdes_kaiser_(benchmark::State& state) {
    const auto taps = static_cast<unsigned>(state.range(0));
    std::vector<float> h(taps);
    for (auto _ : state)
        liquid_firdes_kaiser(taps, 0.2f, static_cast<float>(state.range(1)), 0, h.data());
}
BENCHMARK(liquid_firdes_kaiser_)->ArgsProduct({{65}, {40, 80}});

} // namespace

int main(int argc, char** argv) {
    _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON); // as the harness has it
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
