/** \file
 * Names of the processor types that the library dispatches by.
 */
#ifndef BXCPUTYPE_H
#define BXCPUTYPE_H

#include "foundation/bxstring.h"

#include <array>

struct bxCpuIdent;

/** The library's processor types by code, label (a word, as the key -T takes it) and name. */
class bxCpuType {
  public:
    struct Row {
        int code;          /**< as in zorcore.h */
        const char* label; /**< without blanks */
        const char* name;
    };
    static const std::array<Row, 30> table;

    /** Code of a label, upper and lower case being equal; -1 for an unknown label. */
    static int cpuType(const bxString& label);
    /** Name of a code, "Unknown processor" for an unknown code. */
    static bxString cpuName(int code);
    /** Label of a code, "Undefined" for an unknown code. */
    static bxString cpuLabel(int code);
    /** One line for each registered library: the type its code was chosen for. */
    static bxString optimizedList();
};

/** Facts that decide on a processor's type. */
struct bxCpuFacts {
    bool genuine = false; /**< the vendor whose models are known */
    bool avx = false;     /**< usable, see zor_is_avx_extension */
    bool longMode = false;
};

/**
 * The type code of a processor: the highest instruction-set extension present, or what a known model of the
 * genuine vendor has beyond it.
 */
int bxCpuTypeOf(const bxCpuIdent& ident, const bxCpuFacts& facts);

#endif
