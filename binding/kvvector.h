/** \file
 * One buffer argument of a library function.
 */
#ifndef KVVECTOR_H
#define KVVECTOR_H

#include "data/bxobject.h"
#include "kvfunc.h"
#include "zortypes.h"

/** How a vector is filled. */
enum SetMode : int {
    smDefault, /**< the default constant: 1.00001 for floating point, 2 for integers */
    smZero,    /**< 0 */
    smOne,     /**< 1 */
    smMax,     /**< the type's maximum */
    smMin,     /**< the type's minimum */
    smConst,   /**< the constant (a, b) */
    smRandom,  /**< uniform between a and b; over the type's range when a = b */
    smSequence /**< a ramp from a towards b that begins again behind b */
};

/**
 * A typed data block from the harness's allocator: misaligned and shifted as the session asks, visible in the
 * allocation table, filled by rule. Lengths are in elements, alignments in bytes; a negative alignment asks
 * for the session's. Fills and texts on a vector without data do nothing or are empty.
 */
class kvVector : public bxObject {
  public:
    kvVector() = default;
    explicit kvVector(kvType type) { init(type); }
    kvVector(const kvFunc& func, int arg) { init(func, arg); }
    kvVector(const kvFunc& func, kvArg arg) { init(func, arg); }
    kvVector(const kvVector&) = delete;
    kvVector& operator=(const kvVector&) = delete;

    int objectSize() const override { return size(); }
    bxString objectInfo() const override;
    /** Keeps a copy of the present content; false without data or memory. */
    bool reserveCopy() override;
    /** Puts the kept content back; false when there is none. */
    bool setReservedCopy() override;
    void deleteReservedCopy() override;
    ~kvVector() override;

    /** Frees the data and the reserved copy. */
    virtual void deleteVector();
    virtual void setConst();
    virtual void setConst(double re, double im);
    virtual void setMinValue();
    virtual void setMaxValue();
    /** A chirp over the type's whole range, or of amplitude 1. */
    virtual void setJaehne();
    /** Element n = magn sin(pi n^2 / (2 length)), around the middle of the range for unsigned types. */
    virtual void setJaehne(double magn);
    /** A ramp that reaches b at the last element. */
    virtual void setSequence(double a, double b);
    /** A ramp with a step; beyond the end it starts again (wrap) or stays at the end. */
    virtual void setSequence(double start, double end, double step, bool wrap);
    virtual void setRandom();
    virtual void setRandom(double lo, double hi);
    virtual void setRandom(double lo, double hi, unsigned int seed);
    /** The elements as text, each in its type's format, without separators. */
    virtual bxString getString() const;
    /** Size in bytes. */
    virtual int size() const;
    virtual void* getReservedData() { return m_reserved; }
    virtual void setVector(SetMode mode, double a, double b);
    /** Fills one element by the same rules. */
    virtual void setIndex(int i, SetMode mode, double a, double b);
    /** Element i, its real part. */
    virtual double getIndex(int i) const;
    virtual void getIndex(int i, double& re, double& im) const;
    virtual const void* getDataConst() const { return m_data; }

    /** Drops the data and sets the type; it is no work memory. */
    void init(kvType type);
    /** From now on the data are the function's own: two builds of it need not leave the same in them. */
    void setWorkMemory() { m_work = true; }
    bool isWorkMemory() const override { return m_work; }
    /** Takes the type of the n-th argument of a function. */
    void init(const kvFunc& func, int arg);
    void init(const kvFunc& func, kvArg arg);

    /** Allocates `len` elements and fills them by the default rule; false after the allocator's message. */
    bool createVector(int len, int align) { return createVector(len, align, nullptr); }
    /** The same for a block that another object owns. */
    bool createVector(int len, int align, void* owner);
    /** The same with the session's alignment and a fill. */
    bool createVector(int len, SetMode mode, double a, double b);
    bool createVectorExt(int len, int align, SetMode mode, double a, double b);
    /** Allocates zeroed bytes and sets the typed pointer; the length is the caller's. */
    bool allocateVector(int bytes, int align, void* owner);

    kvType type() const { return m_type; }
    int length() const { return m_length; }
    void* data() { return m_data; }
    void* getPointerAt(int i) const;

    /** Bytes of an element of the descriptor's first type. */
    static int item(const kvFunc& descr) { return kvElementSize(descr.type(1)); }
    static double getMinValue(kvType type);
    static double getMaxValue(kvType type);
    /** The smallest magnitude above 0 that a fill may use. */
    static double getMinAbsValue(kvType type);
    static bxString getDataString(kvType type, const void* data, int length);
    static bxString getByteString(const void* data, int count);

    /** State of the random generator, shared by all vectors. */
    static unsigned int m_seed;

    /** The data by element type: the pointer that matches the type, the others null. */
    Zor8u* p8u = nullptr;
    Zor16u* p16u = nullptr;
    Zor32u* p32u = nullptr;
    Zor64u* p64u = nullptr;
    Zor8s* p8s = nullptr;
    Zor16s* p16s = nullptr;
    Zor32s* p32s = nullptr;
    Zor64s* p64s = nullptr;
    Zor8sc* p8sc = nullptr;
    Zor16sc* p16sc = nullptr;
    Zor16uc* p16uc = nullptr;
    Zor32sc* p32sc = nullptr;
    Zor64sc* p64sc = nullptr;
    Zor32f* p32f = nullptr;
    Zor64f* p64f = nullptr;
    Zor32fc* p32fc = nullptr;
    Zor64fc* p64fc = nullptr;

  private:
    void setTypedPointer(void* data);

    void* m_data = nullptr;
    void* m_owner = nullptr;
    void* m_reserved = nullptr;
    int m_length = 0;
    kvType m_type = kvUndef;
    bool m_work = false;
};

#endif
