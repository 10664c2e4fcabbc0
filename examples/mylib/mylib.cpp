#include "mylib.h"

#include <algorithm>
#include <new>
#include <vector>

struct MylibFir {
    std::vector<float> taps; /**< the last one first */
    std::vector<float> past; /**< the samples before those of a call; during a call followed by these */
};

int mylibScale_32f_I(float factor, float* data, int length) {
    if (!data || length < 1)
        return -1;
    for (int i = 0; i < length; ++i)
        data[i] *= factor;
    return 0;
}

MylibFir* mylibFirCreate(const float* taps, int count) try {
    if (!taps || count < 1)
        return nullptr;
    auto* filter =
        new MylibFir{{taps, taps + count}, std::vector<float>(static_cast<std::size_t>(count) - 1)};
    std::reverse(filter->taps.begin(), filter->taps.end());
    return filter;
} catch (const std::bad_alloc&) {
    return nullptr;
}

void mylibFirDestroy(MylibFir* filter) {
    delete filter;
}

int mylibFirExecute_32f(MylibFir* filter, const float* x, float* y, int length) {
    if (!filter || !x || !y || length < 1)
        return -1;
    const auto past = static_cast<int>(filter->taps.size()) - 1;
    filter->past.insert(filter->past.end(), x, x + length);
    const float* window = filter->past.data();
    for (int i = 0; i < length; ++i, ++window) {
        float sum = 0;
        for (int k = 0; k <= past; ++k)
            sum += filter->taps[static_cast<std::size_t>(k)] * window[k];
        y[i] = sum;
    }
    filter->past.erase(filter->past.begin(), filter->past.end() - past);
    return 0;
}
