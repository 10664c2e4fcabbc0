#include "data/bxrandomdata.h"

namespace {

int s_most = 0;

} // namespace

int bxGetRandomData() {
    return s_most;
}

void bxSetRandomData(int most) {
    s_most = most;
}
