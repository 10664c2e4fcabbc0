// FFTW, single precision, in the short form.
#include "kv.h"

#include <fftw3.h>

static const kvLibrary library("FFTW", fftwf_version);

static const kvMeasure complexTransform(
    "fftwf_execute_dft_1d", kvSize("Size", 64, 1000, 1024, 65536), [](kvData& data, int size) {
        fftwf_complex *x = data.random(size), *y = data.output(size);
        auto plan =
            data.state(fftwf_plan_dft_1d(size, x, y, FFTW_FORWARD, FFTW_ESTIMATE), fftwf_destroy_plan);
        return [=] { fftwf_execute(plan); };
    });
static const kvMeasure realTransform(
    "fftwf_execute_dft_r2c_1d", kvSize("Size", 64, 1000, 1024, 65536), [](kvData& data, int size) {
        float* x = data.random(size);
        fftwf_complex* y = data.output(size / 2 + 1);
        auto plan = data.state(fftwf_plan_dft_r2c_1d(size, x, y, FFTW_ESTIMATE), fftwf_destroy_plan);
        return [=] { fftwf_execute(plan); };
    });
static const kvMeasure cosineTransform("fftwf_execute_r2r_1d", kvSize("Size", 64, 1024),
    kvNames<fftwf_r2r_kind>("Kind", {{"DCT2", FFTW_REDFT10}, {"DCT4", FFTW_REDFT11}}),
    [](kvData& data, int size, fftwf_r2r_kind kind) {
        float *x = data.random(size), *y = data.output(size);
        auto plan = data.state(fftwf_plan_r2r_1d(size, x, y, kind, FFTW_ESTIMATE), fftwf_destroy_plan);
        return [=] { fftwf_execute(plan); };
    });
