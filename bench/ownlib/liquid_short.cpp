// Twelve functions of liquid-dsp in the short form.
#include "kv.h"

#include <liquid/liquid.h>

static const kvLibrary library("liquid-dsp", liquid_libversion(), kvPositiveFails);

static const kvMeasure firReal("firfilt_rrrf_execute_block", kvParm("Taps", 16, 64),
    kvSize("Length", 256, 1024), [](kvData& data, int taps, int length) {
        float *h = data.random(taps), *x = data.random(length), *y = data.output(length);
        auto q = data.state(firfilt_rrrf_create(h, taps), firfilt_rrrf_destroy);
        return [=] { return firfilt_rrrf_execute_block(q, x, length, y); };
    });
static const kvMeasure firComplex("firfilt_crcf_execute_block", kvParm("Taps", 16, 64),
    kvSize("Length", 256, 1024), [](kvData& data, int taps, int length) {
        liquid_float_complex *x = data.random(length), *y = data.output(length);
        auto q = data.state(firfilt_crcf_create_kaiser(taps, 0.2f, 60, 0), firfilt_crcf_destroy);
        return [=] { return firfilt_crcf_execute_block(q, x, length, y); };
    });
static const kvMeasure iir("iirfilt_crcf_execute_block", kvParm("Order", 3, 7), kvSize("Length", 1024),
    [](kvData& data, int order, int length) {
        liquid_float_complex *x = data.random(length), *y = data.output(length);
        auto q = data.state(iirfilt_crcf_create_lowpass(order, 0.1f), iirfilt_crcf_destroy);
        return [=] { return iirfilt_crcf_execute_block(q, x, length, y); };
    });
static const kvMeasure resampler("resamp_crcf_execute_block", kvParm("Rate", 0.5, 1.2),
    kvSize("Length", 1024), [](kvData& data, float rate, int length) {
        liquid_float_complex *x = data.random(length), *y = data.output(2 * length);
        unsigned* written = data.output(1);
        auto q = data.state(resamp_crcf_create_default(rate), resamp_crcf_destroy);
        return [=] { return resamp_crcf_execute_block(q, x, length, y, written); };
    });
static const kvMeasure dotReal(
    "dotprod_rrrf_execute", kvSize("Length", 64, 1024), [](kvData& data, int length) {
        float *h = data.random(length), *x = data.random(length), *y = data.output(1);
        auto q = data.state(dotprod_rrrf_create(h, length), dotprod_rrrf_destroy);
        return [=] { return dotprod_rrrf_execute(q, x, y); };
    });
static const kvMeasure dotComplex(
    "dotprod_crcf_execute", kvSize("Length", 64, 1024), [](kvData& data, int length) {
        float* h = data.random(length);
        liquid_float_complex *x = data.random(length), *y = data.output(1);
        auto q = data.state(dotprod_crcf_create(h, length), dotprod_crcf_destroy);
        return [=] { return dotprod_crcf_execute(q, x, y); };
    });
static const kvMeasure transform("fft_execute", kvSize("Size", 64, 1000, 1024), [](kvData& data, int size) {
    liquid_float_complex *x = data.random(size), *y = data.output(size);
    auto q = data.state(fft_create_plan(size, x, y, LIQUID_FFT_FORWARD, 0), fft_destroy_plan);
    return [=] { return fft_execute(q); };
});
static const kvMeasure mixer("nco_crcf_mix_block_down", kvSize("Length", 1024), [](kvData& data, int length) {
    liquid_float_complex *x = data.random(length), *y = data.output(length);
    auto q = data.state(nco_crcf_create(LIQUID_NCO), nco_crcf_destroy);
    nco_crcf_set_frequency(q, 0.3f);
    return [=] { return nco_crcf_mix_block_down(q, x, y, length); };
});
static const kvMeasure gain("agc_crcf_execute_block", kvSize("Length", 1024), [](kvData& data, int length) {
    liquid_float_complex *x = data.random(length), *y = data.output(length);
    auto q = data.state(agc_crcf_create(), agc_crcf_destroy);
    return [=] { return agc_crcf_execute_block(q, x, length, y); };
});
static const kvMeasure demodulator("modemcf_demodulate",
    kvNames<modulation_scheme>("Scheme", {{"QPSK", LIQUID_MODEM_QPSK}, {"QAM64", LIQUID_MODEM_QAM64}}),
    [](kvData& data, modulation_scheme scheme) {
        liquid_float_complex* x = data.random(1);
        unsigned* symbol = data.output(1);
        auto q = data.state(modemcf_create(scheme), modemcf_destroy);
        return [=] { return modemcf_demodulate(q, *x, symbol); };
    });
static const kvMeasure crc("crc_generate_key", kvNeverFails, kvSize("Length", 64, 1024),
    kvNames<crc_scheme>("Scheme", {{"CRC16", LIQUID_CRC_16}, {"CRC32", LIQUID_CRC_32}}),
    [](kvData& data, int length, crc_scheme scheme) {
        unsigned char* message = data.random(length);
        return [=] { return crc_generate_key(scheme, message, length); };
    });
static const kvMeasure design("liquid_firdes_kaiser", kvSize("Taps", 65), kvParm("Attenuation", 40.0, 80.0),
    [](kvData& data, int taps, float attenuation) {
        float* h = data.output(taps);
        return [=] { return liquid_firdes_kaiser(taps, 0.2f, attenuation, 0, h); };
    });
