/** \file
 * Checks of arguments that many functions share.
 */
#ifndef ZOR_COMMON_CHECK_H
#define ZOR_COMMON_CHECK_H

#include "zortypes.h"

namespace zor {

template <class... Pointers>
constexpr bool anyNull(const Pointers*... pointers) {
    return ((pointers == nullptr) || ...);
}

/** Whether a pointer of the list is null. */
template <class Pointer>
constexpr bool anyNullIn(const Pointer* list, int count) {
    for (int i = 0; i < count; ++i)
        if (!list[i])
            return true;
    return false;
}

/** The status of a call on `length` elements at the pointers given. */
template <class... Pointers>
constexpr ZorStatus checkVectors(int length, const Pointers*... pointers) {
    return anyNull(pointers...) ? zorStsNullPtrErr : length < 1 ? zorStsSizeErr : zorStsNoErr;
}

/** The status of a call with this state. */
template <class State>
constexpr ZorStatus checkState(const State* state) {
    return !state ? zorStsNullPtrErr : state->tag != State::expectedTag ? zorStsContextErr : zorStsNoErr;
}

} // namespace zor

#endif
