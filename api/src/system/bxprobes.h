/** \file
 * Processor probes: what CPUID says of the processor that the program runs on.
 */
#ifndef BXPROBES_H
#define BXPROBES_H

class CPUID;

/** \name Probes
 * Each executes CPUID and returns 0 or 1; all return 0 on a processor without CPUID. */
/** @{ */
int zor_has_cpuid();          /**< the ID bit of EFLAGS can be toggled */
int zor_has_rdtsc();          /**< time-stamp counter */
int zor_is_mmx_extension();   /**< MMX */
int zor_is_ssx_extension();   /**< SSE */
int zor_is_wni_extension();   /**< SSE2 */
int zor_is_htt_extension();   /**< several logical processors in the package */
int zor_is_pni_extension();   /**< SSE3 */
int zor_is_mni_extension();   /**< SSSE3 */
int zor_is_sse41_extension(); /**< SSE4.1 */
int zor_is_sse42_extension(); /**< SSE4.2 */
int zor_is_movbe();           /**< MOVBE */
int zor_is_avx_extension();   /**< AVX, with the state saved by the operating system */
int zor_is_x64_extension();   /**< 64-bit long mode */
int zor_is_GenuineQuarn();    /**< the vendor string is "GenuineQuarn" */
/** @} */

/** The highest standard CPUID leaf (EAX of leaf 0); 0 without CPUID. */
int zor_max_cpuid_input();

/** Identification of the processor as leaf 1 gives it; the fields are not combined with each other. */
struct bxCpuIdent {
    int stepping = 0;
    int model = 0;          /**< 4 bits */
    int family = 0;         /**< 4 bits */
    int type = 0;           /**< 2 bits */
    int extendedModel = 0;  /**< 4 bits */
    int extendedFamily = 0; /**< 8 bits */
    int brand = 0;          /**< brand index, EBX bits 0 to 7 */
    unsigned int featuresEcx = 0;
    unsigned int featuresEdx = 0;

    /** Family as counted by the makers: the extension is added to family 15. */
    constexpr int displayFamily() const { return family == 15 ? family + extendedFamily : family; }
    /** Model as counted by the makers: the extension is the high digit in families 6 and 15. */
    constexpr int displayModel() const {
        return family == 6 || family == 15 ? (extendedModel << 4) + model : model;
    }
    /** One flag of the feature words. */
    constexpr bool ecx(int bit) const { return (featuresEcx >> bit & 1U) != 0; }
    constexpr bool edx(int bit) const { return (featuresEdx >> bit & 1U) != 0; }
};

/** Takes leaf 1 apart. */
bxCpuIdent bxDecodeCpuIdent(const CPUID& leaf1);

/** Fills the identification of this processor; all 0 without CPUID. */
void zor_get_cpu_ident(bxCpuIdent* ident);

#endif
