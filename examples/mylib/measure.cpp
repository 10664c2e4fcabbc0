// The tests of the library in the short form: a statement for each function.
#include "kv.h"
#include "mylib.h"

static const kvLibrary library("mylib", "1.0");

static const kvMeasure scale("mylibScale_32f_I", kvAbout("in place, by -1"), kvSize("Length", 64, 256, 1024),
    [](kvData& data, int length) {
        float* x = data.random(length);
        data.flops(length);
        return [=] { return mylibScale_32f_I(-1.0f, x, length); };
    });

static const kvMeasure fir("mylibFirExecute_32f", kvParm("Taps", 8, 32), kvSize("Length", 64, 1024),
    [](kvData& data, int taps, int length) {
        float *h = data.random(taps), *x = data.random(length), *y = data.output(length);
        auto* filter = data.state(mylibFirCreate(h, taps), mylibFirDestroy);
        data.flops(2.0 * taps * length);
        return [=] { return mylibFirExecute_32f(filter, x, y, length); };
    });
