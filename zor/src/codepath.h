/** \file
 * Code paths: the same kernel sources compiled for several instruction sets.
 *
 * A kernel source defines functions with internal linkage and one table of pointers to them:
 *
 *     template <> const AacKernels& zor::kernelTable<AacKernels, ZOR_PATH>() {
 *         static constexpr AacKernels table{.tnsAllPole = tnsAllPole, ...};
 *         return table;
 *     }
 *
 * and the public functions call `kernels<AacKernels>().tnsAllPole(...)`. Kernel sources use no function of
 * external linkage that the compiler could emit out of line for one path and the linker take for another.
 */
#ifndef ZOR_CODEPATH_H
#define ZOR_CODEPATH_H

#include "zortypes.h"

extern "C" {
/** The index of the code path in force, a zor::CodePath; owned by the core library. */
extern ZOR_API int zor_code_path;
}

namespace zor {

enum class CodePath : int { portable, sse2, avx, avx2 };

/** The table of one path; defined by the kernel source that is compiled for it. */
template <class Table, CodePath path>
const Table& kernelTable();

/** The table of the path in force. */
template <class Table>
inline const Table& kernels() {
    using Getter = const Table& (*)();
    static constexpr Getter getters[] = {
        kernelTable<Table, CodePath::portable>, kernelTable<Table, CodePath::sse2>,
        kernelTable<Table, CodePath::avx>, kernelTable<Table, CodePath::avx2>};
    return getters[zor_code_path]();
}

} // namespace zor

#endif
