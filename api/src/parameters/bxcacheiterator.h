/** \file
 * Runs a test with its data in and out of the processor cache by scaling one of its parameters.
 */
#ifndef BXCACHEITERATOR_H
#define BXCACHEITERATOR_H

#include "parameters/bxiterator.h"

class bxObject;

/** A test's own way to bring the data from `size` bytes near `target`; `step`: by one small step only. */
using bxCacheSetFunc = bool (*)(bxParameter* parm, int size, int target, bool step);

/**
 * Runs through the cache modes 0 (in cache) and 1 (out of cache). For each combination the test builds its
 * data and calls `validateSize`; while that is false, `repeatValue` scales the cache parameter and the data
 * are built again, until the size fits or `repeatValue` gives up. All sizes are in bytes. It reads no input
 * and lists nothing.
 */
class bxCacheIterator : public bxIterator<int> {
  public:
    /** The sizes of `object` are checked, or with null those of all data; `setFn` may be null. */
    bxCacheIterator(bxParameter& cacheParm, bxObject* object, bxCacheSetFunc setFn);

    bxString valueString() const override { return ""; }
    bxString defaultString() const override { return ""; }
    bxString validString() const override { return ""; }
    bxString description() const override { return ""; }
    bxString prompt() const override { return ""; }
    void toOStream(bxOStream&) const override {}
    void toCStream(bxCStream&) const override {}
    void nameToCStream(bxCStream&) const override {}
    void fromIStream(bxIStream&) override {}

    /** Takes the next cache mode and restarts the cache parameter. */
    bool nextValue() override;

    /** Scales the cache parameter once more; false when the attempts of this combination are used up. */
    virtual bool repeatValue();
    /** Scales the cache parameter so that `size` comes near `target`; false when it cannot. */
    virtual bool setNewValueToParm(int size, int target, bool step);

    /** True when the present data fit the cache mode; else the misfit is noted in the comment and listed. */
    bool validateSize();
    bool setNewValue();

    /** Size of the largest data cache; 0 when it is not known. */
    int cacheSize() const;
    /** The least size of the data object. */
    int lowSize() const;
    /** The largest size of all data. */
    int highSize() const;
    /** The parameter that is scaled. */
    bxParameter* cacheParm() const { return m_cacheParm; }
    int getObjectSize() const;
    int getTotalSize() const;
    /** Name of the cache mode: "inCache" or "outofCache". */
    bxString getComment() const;
    /** Lists the adjustments where the listing's level has hidden them. */
    void outputInfo() const;

  private:
    void noteMisfit(bool tooSmall, bool tooBig);

    bxParameter* m_cacheParm;
    bxObject* m_object;
    int m_attempts = 0;
    int m_objectSize = 0;
    int m_totalSize = 0;
    bool m_lastTooBig = false;
    double m_lowFactor; // share of the cache that in-cache data must fill
    bxString m_comment;
    bxCacheSetFunc m_setFn;
};

/** Scales an integer parameter (a `bxDefault_NSC<int>` or an iterator) by powers of two. */
class bxCacheIteratorInt : public bxCacheIterator {
  public:
    using bxCacheIterator::bxCacheIterator;
    bool setNewValueToParm(int size, int target, bool step) override;
    /** Scales `value`; false, and `value` is of no use, when the result is no positive integer. */
    static bool updateValue(int& value, int size, int target, bool step);
};

/** Scales a two-dimensional size (a `bxDefault_NSC<ZoriSize>` or an iterator), height and width by turns. */
class bxCacheIteratorSize : public bxCacheIterator {
  public:
    using bxCacheIterator::bxCacheIterator;
    bool setNewValueToParm(int size, int target, bool step) override;
    /** Scales `value`; false, and `value` is of no use, when a side is no positive integer. */
    static bool updateValue(ZoriSize& value, int size, int target, bool step);
};

#endif
