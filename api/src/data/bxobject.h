/** \file
 * The owner of a block of test data.
 */
#ifndef BXOBJECT_H
#define BXOBJECT_H

#include "foundation/bxstring.h"

/** Base of every object that owns a block of test data. Derive from it first: owners travel as `void*`. */
class bxObject {
  public:
    constexpr bxObject() = default;

    /** Size of the data in bytes. */
    virtual int objectSize() const { return 0; }
    /** One line that tells what the data are. */
    virtual bxString objectInfo() const { return {}; }
    /** Keeps a copy of the data; false if there is nothing to keep or no memory for it. */
    virtual bool reserveCopy() { return false; }
    /** Restores the data from the copy; false if either is missing. */
    virtual bool setReservedCopy() { return false; }
    virtual void deleteReservedCopy() {}
    virtual ~bxObject() = default;
    /** Whether only the tested function knows what the data mean: its state between calls, its scratch. */
    virtual bool isWorkMemory() const { return false; }
};

/** Owners of blocks that are not themselves objects. */
inline constinit bxObject g_memBuffer;
inline constinit bxObject g_memSubObject;
/** A raw buffer. */
inline constexpr bxObject* MEM_OBJECT_IS_BUFFER = &g_memBuffer;
/** A block inside another object; walks that print data pass over it. */
inline constexpr bxObject* MEM_OBJECT_IS_SUBOBJECT = &g_memSubObject;

#endif
