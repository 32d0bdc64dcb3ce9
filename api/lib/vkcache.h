// The cache-state iterator around a two-dimensional size, and the text form of such a size.
#pragma once

#include "krcache.h"

#include "vekdefs.h"

/// "320x240"; a text without both numbers sets the error mark.
krString& operator<<(krString& text, const VekiSize& value);
VekiSize& operator<<(VekiSize& value, krString& text);

extern template class krDefault_NSC<VekiSize>;
extern template class krIterator_NSC<VekiSize>;
extern template class krIterator<VekiSize>;

/// The iterator around a size parameter of a width and a height.
template <>
bool krCacheIteratorOf<VekiSize>::updateValue(VekiSize& value, int size, int bound, bool stepwise);
using krCacheIteratorSize = krCacheIteratorOf<VekiSize>;
