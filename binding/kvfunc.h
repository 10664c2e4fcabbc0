/** \file
 * The name of a library function and what can be read from it.
 */
#ifndef KVFUNC_H
#define KVFUNC_H

#include "foundation/bxstring.h"
#include "kvtype.h"

/** Length of the type token ("32s", "16u", "32fc", ...) that a text starts with; 0 when there is none. */
int lenOfType(const bxString& text);

/** Position of the first "_" that is followed by a type token; -1 when there is none. */
int endOfBase(const bxString& name);

/**
 * A function name such as "zorsDecodeTNS_AAC_32s_I": prefix, base name, type part and descriptor.
 * The value is the name itself; the parts are computed on demand.
 */
class kvFunc : public bxString {
  public:
    kvFunc() = default;
    kvFunc(const bxString& name) : bxString(name) {}
    kvFunc(const char* name) : bxString(name) {}

    /** Splits the name behind its prefix into base name, type part and descriptor. */
    void parseFunction(bxString& base, bxString& types, bxString& descr) const;

    /** "zors" or "zori" when the name begins with one of them, else empty. */
    bxString prefix() const;
    bxString baseName() const;
    bxString typeName() const;
    bxString descrName() const;

    /**
     * The type of the n-th type token, counted from 1; undefined beyond the last.
     * 0 asks for the type that the base name implies (a parser of byte streams names none but reads 8u);
     * where it implies none, that of the first token.
     */
    kvType type(int n) const;
    kvType type(kvArg arg) const;
    /** The types of the first four tokens; undefined where there is none. */
    void getTypes(kvType& t1, kvType& t2, kvType& t3, kvType& t4) const;

    /** The n-th channel code of the descriptor ("C3", "AC4", "P3"), the only one for every n; else empty. */
    bxString channelsName(int n) const;
    bxString srcChannelsName() const { return channelsName(1); }
    bxString dstChannelsName() const { return channelsName(2); }
    /** The number of channels of the n-th code, 1 without a code. */
    int channels(int n) const;
    /** Whether the n-th channel code is planar ("P..."). */
    bool plane(int n) const;
    /** Whether the n-th channel code has a channel that is left alone ("A..."). */
    bool alpha(int n) const;
    /** Flags of the descriptor behind the channel codes. */
    bool inplace() const; /**< "I": works in place */
    bool mask() const;    /**< "M": takes a mask */
    bool scale() const;   /**< "Sfs": takes a scale factor */
    bool roi() const;     /**< "R": works on a region */
    bool coi() const;     /**< a "C" behind the channel codes: works on one channel */

    /** Order of functions: prefix and base name, then up to three types, then the descriptor. */
    int compare(const kvFunc& other) const;
    /** Order of two type parts, token by token; an empty token first, the real type before the complex. */
    static int compareTypes(const bxString& a, const bxString& b);
    /** Order of two descriptors: in-place variants last, "AC4" behind "C...", else as text. */
    static int compareDescr(const bxString& a, const bxString& b);

    /** The name of a type, "undef" for a code that is none. */
    static bxString typeToString(kvType type);
    /** The type of a name, undefined for a text that is none. */
    static kvType stringToType(const bxString& text);

  protected:
    /** What a domain knows beyond the name's tokens: a derived name may correct types, channels and planes.
     */
    virtual void updateTypes(kvType& t1, kvType& t2, kvType& t3, kvType& t4) const;
    virtual void updateChannels(int& src, int& dst) const;
    virtual void updatePlanes(bool& src, bool& dst) const;

  private:
    /** Where the descriptor's flags begin: behind its channel codes. */
    bxString descrFlags() const;
};

/** The three cells that a function's name fills in a table. */
struct kvFuncCells {
    explicit kvFuncCells(const kvFunc& func);

    bxString function; /**< prefix and base name */
    bxString types;
    bxString descr;
};

#endif
