/** \file
 * The table of live blocks.
 */
#ifndef BXADDRESSLIST_H
#define BXADDRESSLIST_H

#include "data/bxobject.h"
#include "foundation/bxlist.h"
#include "foundation/bxstring.h"

#include <cstddef>
#include <unordered_map>

/** One live block of test data. */
struct Address {
    void* raw = nullptr;     /**< what has to be freed */
    void* aligned = nullptr; /**< what the caller has */
    int size = 0;            /**< as asked for, in bytes */
    bxObject* owner = nullptr;
    std::size_t mapped = 0; /**< size of the mapping of a guarded block; 0 for all others */
    long long number = 0;   /**< counts all blocks ever allocated */

    bxString text() const;
};

/** All live blocks in the order of their allocation, with an index by address and the cursor of a walk. */
class AddressList : public bxList<Address> {
  public:
    void add(const Address& block);
    /** The block at an address; end() if there is none. */
    iterator lookup(void* aligned);
    void remove(iterator block);

    /** Starts a walk. */
    void rewind() { m_cursor = begin(); }
    /** The next block of the walk; null at the end. */
    const Address* next();

    long long totalSize() const { return m_totalSize; }

  private:
    std::unordered_map<void*, iterator> m_index;
    iterator m_cursor = end();
    long long m_totalSize = 0;
};

#endif
