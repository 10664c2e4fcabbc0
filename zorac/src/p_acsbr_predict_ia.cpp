// Prediction coefficients of spectral band replication.
#include "zorcore.h"

#include "bandlines.h"
#include "suiteparms.h"
#include "zorac.h"

#include <cmath>
#include <cstdlib>

namespace {

constexpr int pastSlots = 2;
constexpr int mostBands = 64; /**< of the replicated signal */
constexpr int mostSlots = 4096;

BandLines s_lines;
kvVector s_alpha[4], s_alphaPairs[2];
int s_bands, s_slots;

bxIterator<int> s_k0(0, "", ""), s_len(0, "", "");

/** A band of a stationary signal: one partial, whose frequency rises with the band, and noise. */
void fillBands() {
    for (int band = 0; band < s_bands; ++band)
        for (int slot = 0; slot < s_slots + pastSlots; ++slot) {
            const double angle = 0.1 * (band + 1) * slot;
            const auto noise = [] { return 0.2 * (2.0 * std::rand() / RAND_MAX - 1); };
            s_lines.set(slot, band, static_cast<Zor32f>(std::cos(angle) + noise()),
                        static_cast<Zor32f>(std::sin(angle) + noise()));
        }
}

class Timacsbr_Predict : public DivisorCellTest {
  public:
    using DivisorCellTest::DivisorCellTest;

    bool canStart() override {
        setParm(s_k0, "k0", "number of bands", {30, 32});
        setParm(s_len, "len", "slots of the covariances", {4, 8, 16});
        regParm(s_k0);
        regParm(s_len);
        return true;
    }

    bool initData() override {
        if (!within({{s_k0, 1, mostBands}, {s_len, 1, mostSlots}}))
            return false;
        s_bands = s_k0.value();
        s_slots = s_len.value();
        m_divisor = s_bands * s_slots;
        if (!s_lines.create(*this, s_slots + pastSlots, s_bands, true))
            return false;
        for (kvVector& alpha : s_alpha)
            if (!make(alpha, kv32f, s_bands))
                return false;
        for (kvVector& alpha : s_alphaPairs)
            if (!make(alpha, kv32fc, s_bands))
                return false;
        fillBands();
        return true;
    }

    bxString getUnit() override { return "k0*len"; }
};

int tcall_zorsPredictCoef_SBR_R_32f_D2L() {
    return zorsPredictCoef_SBR_R_32f_D2L(s_lines.reList.data(), s_alpha[0].p32f, s_alpha[1].p32f, s_bands,
                                         s_slots);
}

int tcall_zorsPredictCoef_SBR_C_32f_D2L() {
    return zorsPredictCoef_SBR_C_32f_D2L(s_lines.reList.data(), s_lines.imList.data(), s_alpha[0].p32f,
                                         s_alpha[1].p32f, s_alpha[2].p32f, s_alpha[3].p32f, s_bands, s_slots);
}

int tcall_zorsPredictCoef_SBR_C_32fc_D2L() {
    return zorsPredictCoef_SBR_C_32fc_D2L(s_lines.pairList.data(), s_alphaPairs[0].p32fc,
                                          s_alphaPairs[1].p32fc, s_bands, s_slots);
}

KV_REG(Timacsbr_Predict, zorsPredictCoef_SBR_R_32f_D2L)
KV_REG(Timacsbr_Predict, zorsPredictCoef_SBR_C_32f_D2L)
KV_REG(Timacsbr_Predict, zorsPredictCoef_SBR_C_32fc_D2L)

} // namespace
