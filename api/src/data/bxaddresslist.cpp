#include "data/bxaddresslist.h"

bxString Address::text() const {
    return bxString("size:") << size << "  address:" << raw << "  alignedPointer:" << aligned;
}

void AddressList::add(const Address& block) {
    m_index.emplace(block.aligned, insert(end(), block));
    m_totalSize += block.size;
}

AddressList::iterator AddressList::lookup(void* aligned) {
    const auto found = m_index.find(aligned);
    return found == m_index.end() ? end() : found->second;
}

void AddressList::remove(iterator block) {
    if (m_cursor == block)
        ++m_cursor;
    m_totalSize -= block->size;
    m_index.erase(block->aligned);
    erase(block);
}

const Address* AddressList::next() {
    return m_cursor == end() ? nullptr : &*m_cursor++;
}
