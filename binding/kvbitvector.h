/** \file
 * A byte vector with a bit cursor, to build and read bit streams.
 */
#ifndef KVBITVECTOR_H
#define KVBITVECTOR_H

#include "kvvector.h"
#include "output/bxostream.h"

/**
 * Bits are numbered from the most significant bit of each byte; the cursor's position is byte index x 8 + bit
 * index. Beyond the end, writes are dropped and reads give 0; the cursor advances all the same.
 */
class kvBitVector : public kvVector {
  public:
    kvBitVector() : kvVector(kv8u) {}
    ~kvBitVector() override = default;

    bxString objectInfo() const override;
    bxString getString() const override;
    /** All bits as text. */
    virtual bxString getBitString() const { return getBitString(0, 0); }
    /**
     * The bits from `start` (`n` of them; all that remain when n is 0 or larger than that) in lines of 64,
     * with a blank behind every four.
     */
    bxString getBitString(int start, int n) const;

    void setBitPos(int position);
    int getBitPos() const { return m_byte * 8 + m_bit; }
    /** Writes the lowest bit of a value. */
    void setBit(unsigned char bit);
    unsigned char getBit();
    void incrementPos();
    /** Writes bits n-1 to 0 of a value, the most significant first. */
    void setBits(unsigned int value, int n);
    /** Reads n bits, the most significant first, into the low bits of a value. */
    void getBits(unsigned int& value, int n);
    /** Writes one bit for each "0" or "1"; other characters are passed over. */
    void setBits(const bxString& text);
    void setBits(const char* text) { setBits(bxString(text)); }
    /** Reads n bits as text, with a blank before every bit whose position is a multiple of 4 but the first.
     */
    void getBits(bxString& text, int n);

    /** `n` bits of a value from bit `start` (0 the most significant) as "0" and "1". */
    static bxString bitString(unsigned char value, int start, int n);
    static bxString bitString(unsigned int value, int start, int n);
    /** Writes the bits from `start` to a stream, as `getBitString` does. */
    void bitprn(bxOStream& out, int start, int n) const;

  private:
    unsigned char bitAt(int position) const;

    int m_byte = 0;
    int m_bit = 0;
};

#endif
