/** \file
 * The tests of the misbehaving functions, registered like those of any library, and a witness among them that
 * tells whether the test before has left anything behind.
 */
#ifndef MISBEHAVE_SUITE_H
#define MISBEHAVE_SUITE_H

#include "kv.h"

/** The data of the test that runs: 256 random numbers from the seed with which every test starts. */
class TimMisbehave : public kvTest {
  public:
    using kvTest::kvTest;
    bool initData() override;
    bool flushData() override;
    double getDivisor() override { return length; }
    bxString getUnit() override { return "e"; }

    static constexpr int length = 256;
};

/** What the witness found when it was called. */
struct Witness {
    double sum = 0;         /**< over its data */
    unsigned control87 = 0; /**< control word */
    unsigned tags87 = 0;    /**< 0xFFFF for an empty x87 stack */
    unsigned controlSSX = 0;
    unsigned seed = 0; /**< of the generator, behind its data */

    bool operator==(const Witness&) const = default;
};

/** What the last witness found. */
extern Witness s_witness;

#endif
