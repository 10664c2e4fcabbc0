#include "mylib.h"

int mylibScale_32f_I(float factor, float* data, int length) {
    if (!data || length < 1)
        return -1;
    for (int i = 0; i < length; ++i)
        data[i] *= factor;
    return 0;
}
