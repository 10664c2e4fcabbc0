/** \file
 * The bases of the suite's tests: vectors that live for one combination, divisors, and the limits of
 * parameters.
 */
#ifndef SUITETEST_H
#define SUITETEST_H

#include "kv.h"

#include <initializer_list>
#include <vector>

/** The values of a parameter that a combination can be measured with. */
struct Bound {
    const bxDefault_NSC<int>& parm;
    int low, high;
    /** INFO where the test's own values lie outside in some combinations. */
    MessageLevel level = ERR;

    bool holds() const { return parm.value() >= low && parm.value() <= high; }
    bxString complaint() const {
        return bxString() << parm.name() << "=" << parm.value() << " is not within " << low << " to " << high;
    }
};

/** Most floats by which a test moves its data. */
constexpr int maxOffset = 4096;

/**
 * A test whose vectors live for one combination, and which says why it passes a combination over: at once,
 * or, where its own values do not all fit together, in detailed listings and when nothing at all was
 * measured.
 */
class SuiteTest : public kvTest {
  public:
    using kvTest::kvTest;

    void flushStart() override {
        if (m_currentResult == DATAFAIL && !m_unsaid.empty())
            passOver(m_unsaid, ERR);
        m_unsaid = {};
    }
    bool flushData() override {
        for (kvVector* vector : m_vectors)
            vector->deleteVector();
        m_vectors.clear();
        return true;
    }

    /** Creates the combination's first vector, which carries the session's misalignment. */
    bool makeFirst(kvVector& vector, kvType type, int len) { return create(vector, type, len, -1); }

    /** Creates a vector on a 64-byte boundary, or `misalign` bytes past one, at its own mutual offset. */
    bool make(kvVector& vector, kvType type, int len, int misalign = 0) {
        return create(vector, type, len, misalign);
    }

    /** Creates memory for the function's own use. */
    bool makeWork(kvVector& vector, kvType type, int len) {
        if (!make(vector, type, len))
            return false;
        vector.setWorkMemory();
        return true;
    }

    /** Whether all parameters are within their bounds; the first that is not passes the combination over. */
    bool within(std::initializer_list<Bound> bounds) {
        for (const Bound& bound : bounds)
            if (!bound.holds())
                return passOver(bound.complaint(), bound.level);
        return true;
    }

    /** Whether a state could be built; its function's error passes the combination over. */
    bool built(ZorStatus status, const char* function) {
        return status >= 0 || passOver(bxString() << function << " returns " << status, ERR);
    }

  private:
    /** Says why a combination is passed over, and returns false. */
    bool passOver(const bxString& why, MessageLevel level) {
        g_ostrm << level << "-- Passed over: " << why << "\n" << endMessage;
        m_unsaid = level == INFO ? why : bxString();
        return false;
    }

    bool create(kvVector& vector, kvType type, int len, int align) {
        m_vectors.push_back(&vector);
        vector.init(type);
        return vector.createVector(len, align);
    }

    std::vector<kvVector*> m_vectors;
    bxString m_unsaid; /**< the last reason that the default listing does not show */
};

/** A test whose rows begin with the divisor, the units of work of a call. */
class DivisorCellTest : public SuiteTest {
  public:
    using SuiteTest::SuiteTest;
    double getDivisor() override { return m_divisor; }
    void parmsToCstrm() override {
        g_cstrm << static_cast<int>(getDivisor());
        SuiteTest::parmsToCstrm();
    }
    void parmsNameToCstrm() override {
        g_cstrm << "divisor";
        SuiteTest::parmsNameToCstrm();
    }

  protected:
    int m_divisor = 1; /**< of the present combination */
};

/** A test that reports clocks per element. */
class PerElementTest : public DivisorCellTest {
  public:
    using DivisorCellTest::DivisorCellTest;
    bxString getUnit() override { return "e"; }
};

#endif
