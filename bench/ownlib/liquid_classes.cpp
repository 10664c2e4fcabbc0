// The same twelve functions as classes and registrations.
#include "kv.h"

#include <liquid/liquid.h>

namespace {

const kvLibrary library("liquid-dsp", liquid_libversion(), kvPositiveFails);

kvVector s_h, s_x, s_y, s_written;
bxIterator<int> s_size(64, "Length", ""), s_taps(16, "Taps", "");

/** Vectors that live for one combination; clocks are given per element. */
class TimVectors : public kvTest {
  public:
    using kvTest::kvTest;
    bool canStart() override {
        setSizes({1024});
        return true;
    }
    bool flushData() override {
        for (kvVector* vector : {&s_h, &s_x, &s_y, &s_written})
            vector->deleteVector();
        return true;
    }
    double getDivisor() override { return s_size.value(); }
    bxString getUnit() override { return "e"; }

  protected:
    void setSizes(std::initializer_list<int> sizes, const char* itsName = "Length") {
        s_size.reset();
        s_size.setName(itsName);
        for (const int size : sizes)
            s_size.add(size);
        regCacheParm(s_size);
    }
    void setTaps(std::initializer_list<int> taps, const char* itsName) {
        s_taps.reset();
        s_taps.setName(itsName);
        for (const int n : taps)
            s_taps.add(n);
        regParm(s_taps);
    }
    static bool makeInOut(kvType type, int length, int outLength) {
        s_x.init(type);
        s_y.init(type);
        return s_x.createVector(length, smRandom, -1, 1) && s_y.createVector(outLength, smZero, 0, 0);
    }
    static bool makeTaps(int taps) {
        s_h.init(kv32f);
        return s_h.createVector(taps, smRandom, -1, 1);
    }
};

liquid_float_complex* samples(kvVector& vector) {
    return reinterpret_cast<liquid_float_complex*>(vector.p32fc);
}
unsigned length() {
    return static_cast<unsigned>(s_x.length());
}

firfilt_rrrf s_firReal;
class TimFirReal : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        setTaps({16, 64}, "Taps");
        setSizes({256, 1024});
        return true;
    }
    bool initData() override {
        if (!makeTaps(s_taps.value()) || !makeInOut(kv32f, s_size.value(), s_size.value()))
            return false;
        s_firReal = firfilt_rrrf_create(s_h.p32f, static_cast<unsigned>(s_h.length()));
        return s_firReal != nullptr;
    }
    bool flushData() override {
        firfilt_rrrf_destroy(s_firReal);
        return TimVectors::flushData();
    }
};
int tcall_firfilt_rrrf_execute_block() {
    return firfilt_rrrf_execute_block(s_firReal, s_x.p32f, length(), s_y.p32f);
}
KV_REG(TimFirReal, firfilt_rrrf_execute_block)

firfilt_crcf s_firComplex;
class TimFirComplex : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        setTaps({16, 64}, "Taps");
        setSizes({256, 1024});
        return true;
    }
    bool initData() override {
        if (!makeInOut(kv32fc, s_size.value(), s_size.value()))
            return false;
        s_firComplex = firfilt_crcf_create_kaiser(static_cast<unsigned>(s_taps.value()), 0.2f, 60, 0);
        return s_firComplex != nullptr;
    }
    bool flushData() override {
        firfilt_crcf_destroy(s_firComplex);
        return TimVectors::flushData();
    }
};
int tcall_firfilt_crcf_execute_block() {
    return firfilt_crcf_execute_block(s_firComplex, samples(s_x), length(), samples(s_y));
}
KV_REG(TimFirComplex, firfilt_crcf_execute_block)

iirfilt_crcf s_iir;
class TimIir : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        setTaps({3, 7}, "Order");
        setSizes({1024});
        return true;
    }
    bool initData() override {
        if (!makeInOut(kv32fc, s_size.value(), s_size.value()))
            return false;
        s_iir = iirfilt_crcf_create_lowpass(static_cast<unsigned>(s_taps.value()), 0.1f);
        return s_iir != nullptr;
    }
    bool flushData() override {
        iirfilt_crcf_destroy(s_iir);
        return TimVectors::flushData();
    }
};
int tcall_iirfilt_crcf_execute_block() {
    return iirfilt_crcf_execute_block(s_iir, samples(s_x), length(), samples(s_y));
}
KV_REG(TimIir, iirfilt_crcf_execute_block)

constexpr float rates[] = {0.5f, 1.2f};
bxMapIterator<int> s_rate(0, "Rate", "");
resamp_crcf s_resampler;
class TimResampler : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        s_rate.resetMap();
        s_rate[0] = "0.5";
        s_rate[1] = "1.2";
        s_rate.add(0);
        s_rate.add(1);
        regParm(s_rate);
        setSizes({1024});
        return true;
    }
    bool initData() override {
        s_written.init(kv32u);
        if (!makeInOut(kv32fc, s_size.value(), 2 * s_size.value()) ||
            !s_written.createVector(1, smZero, 0, 0))
            return false;
        s_resampler = resamp_crcf_create_default(rates[s_rate.value()]);
        return s_resampler != nullptr;
    }
    bool flushData() override {
        resamp_crcf_destroy(s_resampler);
        return TimVectors::flushData();
    }
};
int tcall_resamp_crcf_execute_block() {
    return resamp_crcf_execute_block(s_resampler, samples(s_x), length(), samples(s_y), s_written.p32u);
}
KV_REG(TimResampler, resamp_crcf_execute_block)

dotprod_rrrf s_dotReal;
class TimDotReal : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        setSizes({64, 1024});
        return true;
    }
    bool initData() override {
        if (!makeTaps(s_size.value()) || !makeInOut(kv32f, s_size.value(), 1))
            return false;
        s_dotReal = dotprod_rrrf_create(s_h.p32f, length());
        return s_dotReal != nullptr;
    }
    bool flushData() override {
        dotprod_rrrf_destroy(s_dotReal);
        return TimVectors::flushData();
    }
};
int tcall_dotprod_rrrf_execute() {
    return dotprod_rrrf_execute(s_dotReal, s_x.p32f, s_y.p32f);
}
KV_REG(TimDotReal, dotprod_rrrf_execute)

dotprod_crcf s_dotComplex;
class TimDotComplex : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        setSizes({64, 1024});
        return true;
    }
    bool initData() override {
        if (!makeTaps(s_size.value()) || !makeInOut(kv32fc, s_size.value(), 1))
            return false;
        s_dotComplex = dotprod_crcf_create(s_h.p32f, length());
        return s_dotComplex != nullptr;
    }
    bool flushData() override {
        dotprod_crcf_destroy(s_dotComplex);
        return TimVectors::flushData();
    }
};
int tcall_dotprod_crcf_execute() {
    return dotprod_crcf_execute(s_dotComplex, samples(s_x), samples(s_y));
}
KV_REG(TimDotComplex, dotprod_crcf_execute)

fftplan s_plan;
class TimTransform : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        setSizes({64, 1000, 1024}, "Size");
        return true;
    }
    bool initData() override {
        if (!makeInOut(kv32fc, s_size.value(), s_size.value()))
            return false;
        s_plan = fft_create_plan(length(), samples(s_x), samples(s_y), LIQUID_FFT_FORWARD, 0);
        return s_plan != nullptr;
    }
    bool flushData() override {
        fft_destroy_plan(s_plan);
        return TimVectors::flushData();
    }
};
int tcall_fft_execute() {
    return fft_execute(s_plan);
}
KV_REG(TimTransform, fft_execute)

nco_crcf s_mixer;
class TimMixer : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool initData() override {
        if (!makeInOut(kv32fc, s_size.value(), s_size.value()))
            return false;
        s_mixer = nco_crcf_create(LIQUID_NCO);
        nco_crcf_set_frequency(s_mixer, 0.3f);
        return s_mixer != nullptr;
    }
    bool flushData() override {
        nco_crcf_destroy(s_mixer);
        return TimVectors::flushData();
    }
};
int tcall_nco_crcf_mix_block_down() {
    return nco_crcf_mix_block_down(s_mixer, samples(s_x), samples(s_y), length());
}
KV_REG(TimMixer, nco_crcf_mix_block_down)

agc_crcf s_gain;
class TimGain : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool initData() override {
        if (!makeInOut(kv32fc, s_size.value(), s_size.value()))
            return false;
        s_gain = agc_crcf_create();
        return s_gain != nullptr;
    }
    bool flushData() override {
        agc_crcf_destroy(s_gain);
        return TimVectors::flushData();
    }
};
int tcall_agc_crcf_execute_block() {
    return agc_crcf_execute_block(s_gain, samples(s_x), length(), samples(s_y));
}
KV_REG(TimGain, agc_crcf_execute_block)

bxMapIterator<int> s_scheme(0, "Scheme", "");
modemcf s_modem;
class TimDemodulator : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        s_scheme.resetMap();
        s_scheme[LIQUID_MODEM_QPSK] = "QPSK";
        s_scheme[LIQUID_MODEM_QAM64] = "QAM64";
        s_scheme.add(LIQUID_MODEM_QPSK);
        s_scheme.add(LIQUID_MODEM_QAM64);
        regParm(s_scheme);
        return true;
    }
    bool initData() override {
        s_written.init(kv32u);
        if (!makeInOut(kv32fc, 1, 1) || !s_written.createVector(1, smZero, 0, 0))
            return false;
        s_modem = modemcf_create(static_cast<modulation_scheme>(s_scheme.value()));
        return s_modem != nullptr;
    }
    bool flushData() override {
        modemcf_destroy(s_modem);
        return TimVectors::flushData();
    }
    double getDivisor() override { return 1; }
    bxString getUnit() override { return " "; }
};
int tcall_modemcf_demodulate() {
    return modemcf_demodulate(s_modem, *samples(s_x), s_written.p32u);
}
KV_REG(TimDemodulator, modemcf_demodulate)

class TimCrc : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        setSizes({64, 1024});
        s_scheme.resetMap();
        s_scheme[LIQUID_CRC_16] = "CRC16";
        s_scheme[LIQUID_CRC_32] = "CRC32";
        s_scheme.add(LIQUID_CRC_16);
        s_scheme.add(LIQUID_CRC_32);
        regParm(s_scheme);
        return true;
    }
    bool initData() override {
        s_x.init(kv8u);
        return s_x.createVector(s_size.value(), smRandom, 0, 0);
    }
};
int tcall_crc_generate_key() {
    crc_generate_key(static_cast<crc_scheme>(s_scheme.value()), s_x.p8u, length());
    return 0;
}
KV_REG(TimCrc, crc_generate_key)

bxIterator<int> s_attenuation(40, "Attenuation", "");
class TimDesign : public TimVectors {
  public:
    using TimVectors::TimVectors;
    bool canStart() override {
        setSizes({65}, "Taps");
        s_attenuation.reset();
        s_attenuation.add(40);
        s_attenuation.add(80);
        regParm(s_attenuation);
        return true;
    }
    bool initData() override { return makeInOut(kv32f, s_size.value(), s_size.value()); }
};
int tcall_liquid_firdes_kaiser() {
    return liquid_firdes_kaiser(length(), 0.2f, static_cast<float>(s_attenuation.value()), 0, s_y.p32f);
}
KV_REG(TimDesign, liquid_firdes_kaiser)

} // namespace
