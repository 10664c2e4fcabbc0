// Tests in the short form, of a library that says through its figures and its rows what it was given.
#include "zorcore.h"

#include "kv.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <numeric>

namespace {

int s_states = 0;
struct State {
    int taps;
};
State* makeState(int taps) {
    if (taps > 100)
        return nullptr;
    ++s_states;
    return new State{taps};
}
void freeState(State* state) {
    --s_states;
    delete state;
}

enum class Window { hann, kaiser };
enum Code : unsigned { fine, refused = 7 };

const char* codeText(int code) {
    return code == refused ? "refused" : "unknown";
}

bool seemsRandom(const float* x, int n) {
    const float sum = std::accumulate(x, x + n, 0.0f);
    return std::abs(sum) < static_cast<float>(n) / 4 && x[0] != x[1] && std::abs(x[0]) <= 1;
}

const kvLibrary s_library("shortlib", "3.4", kvPositiveFails, codeText);

// Parameters of every kind reach the set-up with their values, data have their contents, and states their
// end.
const kvMeasure
    s_all("all_kinds_32f", kvAbout("every kind"), kvParm("Taps", 8, 101), kvParm("Rate", 0.5, 1),
          kvParm("File", "speech"), kvParm("InPlace", true),
          kvNames<Window>("Window", {{"hann", Window::hann}, {"kaiser", Window::kaiser}}),
          kvSize("Length", 64),
          [](kvData& data, int taps, float rate, const char* file, bool inPlace, Window window, int length) {
              float *x = data.random(length), *ramp = data.ramp(5, 0, 1), *y = data.output(length);
              std::complex<double>* pairs = data.random(2, 3, 4);
              short(*raw)[3] = data.zero(2);
              unsigned char* squares = data.fill(4, [](int i) { return i * i; });
              data.need(window == Window::hann, "Kaiser windows have no function");
              auto state = data.state(makeState(taps), freeState);
              auto owned = data.state(std::make_unique<State>(State{7}));
              data.flops(length);
              const bool good = seemsRandom(x, length) && ramp[4] == 1 && y[0] == 0 && raw[1][2] == 0 &&
                                squares[3] == 9 && pairs[0].real() >= 3 &&
                                pairs[0].real() != pairs[0].imag() && owned->taps == 7 && s_states == 1 &&
                                (rate == 0.5f || rate == 1) && std::strcmp(file, "speech") == 0 && inPlace;
              return [=] { return good && state->taps == taps; };
          });

// A call that goes wrong, by each of its kinds of result.
const kvMeasure s_code("code", kvParm("Size", 1, 2, 3),
                       [](kvData&, int size) { return [=] { return size == 2 ? refused : fine; }; });
const kvMeasure s_negative("negative", kvNegativeFails, [](kvData&) { return [] { return -3L; }; });
const kvMeasure s_count("count", kvNeverFails, [](kvData&) { return [] { return 5u; }; });
const kvMeasure s_value("value", [](kvData&) { return [] { return 0.5f; }; });
const kvMeasure s_truth("truth", [](kvData&) { return [] { return false; }; });

// A crash, with its data; a thrown exception; a call that refers to what is gone.
const kvMeasure s_crash("crash", kvRange("Size", "1; 4; *2"), [](kvData& data, int size) {
    const volatile std::uintptr_t* where =
        data.fill(1, [](long long) { return std::uintptr_t{64}; }); // nowhere
    int* x = data.zero(size);
    return [=] { (size == 2 ? reinterpret_cast<int*>(*where) : x)[0] = size; };
});
const kvMeasure s_throw("throws", [](kvData&) {
    if (s_states == 0)
        throw std::bad_alloc();
    return [] {};
});
const kvMeasure s_reference("reference", [](kvData& data) {
    int* x = data.output(1);
    int** volatile place = &x; // what [&] would capture, hidden from compilers that warn of it
    int** const here = place;
    return [=] { **here = 1; };
});

// Whether results below the smallest normal number become 0 while a function runs.
const kvMeasure s_tiny("tiny", [](kvData& data) {
    float* x = data.fill(1, [](int) { return 1e-20f; });
    return [=] {
        float product = 0;
        __asm__("movss %1, %%xmm0\n\tmulss %1, %%xmm0\n\tmovss %%xmm0, %0"
                : "=m"(product)
                : "m"(*x)
                : "xmm0");
        return product == 0;
    };
});

// A number that looks like an address of the stack is none.
const kvMeasure s_alike("alike", [](kvData&) {
    const auto number = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - 4096;
    static const std::uintptr_t s_first = number;
    return [first = s_first] { return first != 0; };
});

// What consumes its data is restored before each call.
const kvMeasure s_before("before", kvSize("Length", 16), [](kvData& data, int length) {
    float *x = data.ramp(length, 0, 1), *y = data.output(length);
    return kvBefore([=] { std::memcpy(y, x, static_cast<std::size_t>(length) * sizeof *x); },
                    [=] { y[1] -= 1; });
});

} // namespace
