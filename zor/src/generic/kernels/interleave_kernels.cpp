// Interleaving. Up to eight channels have loops of their own, with the distance known to the compiler.
#include "generic/kernel_tables.h"

#include <cstddef>
#include <utility>

namespace {

template <class Sample, std::size_t... channel>
void interleaveFixed(const Sample* const* src, std::size_t length, Sample* __restrict dst,
                     std::index_sequence<channel...>) {
    const Sample* const line[] = {src[channel]...};
    for (std::size_t i = 0; i < length; ++i)
        ((dst[i * sizeof...(channel) + channel] = line[channel][i]), ...);
}

template <class Sample, std::size_t channels>
void deinterleaveOne(const Sample* __restrict src, std::size_t length, Sample* __restrict dst) {
    for (std::size_t i = 0; i < length; ++i)
        dst[i] = src[i * channels];
}

template <class Sample, std::size_t... channel>
void deinterleaveFixed(const Sample* __restrict src, std::size_t length, Sample* const* dst,
                       std::index_sequence<channel...>) {
    (deinterleaveOne<Sample, sizeof...(channel)>(src + channel, length, dst[channel]), ...);
}

/** Calls `run` with the index sequence of the number of channels; false beyond eight. */
template <class Run, std::size_t... less1>
bool withFixedChannels(int channels, Run run, std::index_sequence<less1...>) {
    return ((channels == static_cast<int>(less1) + 1 && (run(std::make_index_sequence<less1 + 1>()), true)) ||
            ...);
}

constexpr auto upToEight = std::make_index_sequence<8>();

template <class Sample>
void interleave(const Sample* const* src, int channels, int length, Sample* dst) {
    const auto count = static_cast<std::size_t>(length), distance = static_cast<std::size_t>(channels);
    if (withFixedChannels(
            channels, [&](auto sequence) { interleaveFixed(src, count, dst, sequence); }, upToEight))
        return;
    for (std::size_t channel = 0; channel < distance; ++channel)
        for (std::size_t i = 0; i < count; ++i)
            dst[i * distance + channel] = src[channel][i];
}

template <class Sample>
void deinterleave(const Sample* src, int channels, int length, Sample* const* dst) {
    const auto count = static_cast<std::size_t>(length), distance = static_cast<std::size_t>(channels);
    if (withFixedChannels(
            channels, [&](auto sequence) { deinterleaveFixed(src, count, dst, sequence); }, upToEight))
        return;
    for (std::size_t channel = 0; channel < distance; ++channel)
        for (std::size_t i = 0; i < count; ++i)
            dst[channel][i] = src[i * distance + channel];
}

template <class Sample>
constexpr zor::InterleaveKernels<Sample> table{.interleave = interleave<Sample>,
                                               .deinterleave = deinterleave<Sample>};

} // namespace

template <>
const zor::InterleaveKernels<Zor16s>& zor::kernelTable<zor::InterleaveKernels<Zor16s>, ZOR_PATH>() {
    return table<Zor16s>;
}

template <>
const zor::InterleaveKernels<Zor32f>& zor::kernelTable<zor::InterleaveKernels<Zor32f>, ZOR_PATH>() {
    return table<Zor32f>;
}
