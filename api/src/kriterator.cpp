// Parameters with several values: the instances of the harness.
#include "kriterator.h"

#include "kriterator.inc"

template class krDefault_NSC<short>;
template class krDefault_NSC<unsigned int>;
template class krIterator_NSC<int>;
template class krIterator_NSC<short>;
template class krIterator_NSC<unsigned int>;
template class krIterator<int>;
template class krIterator<short>;
template class krIterator<unsigned int>;
template class krStepIterator<int>;
template class krStepIterator<short>;
template class krStepIterator<unsigned int>;
template class krEnumIterator_NCS<int>;
template class krEnumIterator_NCS<short>;
template class krEnumIterator_NCS<unsigned int>;
template class krEnumIterator<int>;
template class krEnumIterator<short>;
template class krEnumIterator<unsigned int>;
