/** \file
 * Element types of library arguments.
 */
#ifndef KVTYPE_H
#define KVTYPE_H

/**
 * Code of an element type, a bit set: the low byte is the width of a component in bits (8, 16, 32 or 64),
 * 0x100 marks signed, 0x200 floating point, 0x400 complex.
 */
enum kvType : int {
    kvUndef = 0,
    kv8u = 0x008,
    kv16u = 0x010,
    kv32u = 0x020,
    kv64u = 0x040,
    kv8s = 0x108,
    kv16s = 0x110,
    kv32s = 0x120,
    kv64s = 0x140,
    kv32f = 0x220,
    kv64f = 0x240,
    kv16uc = 0x410,
    kv8sc = 0x508,
    kv16sc = 0x510,
    kv32sc = 0x520,
    kv64sc = 0x540,
    kv32fc = 0x620,
    kv64fc = 0x640
};

constexpr int kvWidthMask = 0xFF;
constexpr int kvSignedBit = 0x100;
constexpr int kvFloatBit = 0x200;
constexpr int kvComplexBit = 0x400;

constexpr bool kvIsComplex(kvType type) {
    return (type & kvComplexBit) != 0;
}
constexpr bool kvIsFloat(kvType type) {
    return (type & kvFloatBit) != 0;
}
constexpr bool kvIsInteger(kvType type) {
    return type != kvUndef && !kvIsFloat(type);
}
constexpr bool kvIsUnsigned(kvType type) {
    return kvIsInteger(type) && (type & kvSignedBit) == 0;
}

/** The type of one component: the type itself for real types. */
constexpr kvType kvComponent(kvType type) {
    return static_cast<kvType>(type & ~kvComplexBit);
}

/** Components of one element: 2 for complex types, else 1. */
constexpr int kvComponents(kvType type) {
    return kvIsComplex(type) ? 2 : 1;
}

/** Bytes of one element; 0 for the undefined type. */
constexpr int kvElementSize(kvType type) {
    return (type & kvWidthMask) * kvComponents(type) / 8;
}

/** An argument of a function, by its part in the call. */
enum kvArg : int {
    kvArgSrc, /**< the (first) source: the first type token */
    kvArgDst  /**< the destination: the last type token of the type part */
};

#endif
