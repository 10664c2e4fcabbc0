#include "parameters/bxiterator.h"

#include "parameters/bxmap.h"

template class bxDefault_NSC<int>;
template class bxDefault_NSC<bool>;
template class bxWithTextForm<int, bxDefault_NSC<int>>;
template class bxIterator_NSC<int>;
template class bxWithTextForm<int, bxIterator_NSC<int>>;
template class bxIterator_NSC<ZoriSize>;
template class bxWithTextForm<ZoriSize, bxIterator_NSC<ZoriSize>>;
template class bxEnumIterator_NCS<int>;
template class bxWithTextForm<int, bxEnumIterator_NCS<int>>;
template class bxMapIterator<int>;
template class bxMapDefault<int>;
template class bxMapDefault<bool>;
