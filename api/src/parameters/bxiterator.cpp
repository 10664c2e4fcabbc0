#include "parameters/bxiterator.h"

#include "parameters/bxmap.h"
#include "timing/bxexception.h"

void bxThrowEmptyIterator() {
    throw bxException(bxString("Empty iterator definition"));
}

template class bxDefault_NSC<int>;
template class bxDefault_NSC<bool>;
template class bxDefault<int>;
template class bxIterator_NSC<int>;
template class bxIterator<int>;
template class bxIterator_NSC<ZoriSize>;
template class bxIterator<ZoriSize>;
template class bxEnumIterator_NCS<int>;
template class bxEnumIterator<int>;
template class bxMapIterator<int>;
template class bxMapDefault<int>;
template class bxMapDefault<bool>;
