/** \file
 * The code tables of the VLC tests.
 */
#ifndef KVVLCTABLE_H
#define KVVLCTABLE_H

#include "zordc.h"

/**
 * One of four code tables in the library's record format: the signed pairs (x, y) of the escape books of AAC
 * (magnitudes up to 16) and MP3 (up to 15), x slowest, for encoding or decoding. The tables of a book list
 * the same codes; the value of a record is the pair's number for the encoder, the two values for the decoder.
 */
class kvacVLCTable {
  public:
    /** Each selects its table and returns true. */
    bool setTableEncode_AAC();
    bool setTableDecode_AAC();
    bool setTableEncode_MP3();
    bool setTableDecode_MP3();

    /** The records of the table selected; null at first. */
    const ZorVLCTable_32s* table() const { return m_table; }
    /** Number of records of the table selected. */
    int size() const { return m_size; }
    /** The largest magnitude that is coded without an escape. */
    int maxValue() const { return 15; }
    int getTableSize_AAC() const;
    int getTableSize_MP3() const;

  private:
    const ZorVLCTable_32s* m_table = nullptr;
    int m_size = 0;
};

#endif
