#include "kvmeasuredata.h"

#include "data/bxalloc.h"
#include "data/bxplacement.h"
#include "output/bxostream.h"

#include <algorithm>
#include <climits>

namespace {

void fillBlock(kvVector& block, const kv::Fill& fill) {
    if (fill.mode == smSequence)
        block.setSequence(fill.first, fill.last);
    else if (fill.ranged || !kvIsFloat(block.type()))
        block.setVector(fill.mode, fill.first, fill.last);
    else
        block.setVector(fill.mode, -1, 1);
}

} // namespace

void kvData::begin() {
    end();
    m_units = 1;
    m_unit = " ";
    m_flops = -1;
}

void kvData::end() {
    while (!m_ends.empty()) {
        // Taken out first: one that faults is not tried again.
        const std::function<void()> action = std::move(m_ends.back());
        m_ends.pop_back();
        action();
    }
    while (!m_blocks.empty()) {
        m_blocks.back().deleteVector();
        m_blocks.pop_back();
    }
}

void* kvData::make(long long length, int bytes, kvType type, const kv::Fill& fill) {
    const int failures = g_placement.failures;
    kvVector& block = m_blocks.emplace_back(type == kvUndef ? kv8u : type);
    const long long elements = type == kvUndef ? length * bytes : length;
    if (!block.createVector(static_cast<int>(std::clamp(elements, 0LL, static_cast<long long>(INT_MAX))),
                            -1)) {
        g_placement.failures = std::max(g_placement.failures, failures + 1);
        throw kv::PassedOver();
    }
    if (fill.work)
        block.setWorkMemory();
    fillBlock(block, fill);
    return block.data();
}

void kvData::passOver(const char* what) {
    g_ostrm << PERF << "  passed over: " << what << "\n" << endMessage;
    throw kv::PassedOver();
}

void kvData::noState() {
    ++g_placement.failures;
    g_ostrm << WARN << "-- The library could not make a state object: the combination is passed over\n"
            << endMessage;
    throw kv::PassedOver();
}
