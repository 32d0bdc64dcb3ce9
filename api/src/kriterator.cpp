// Parameters with several values: the instances of the harness.
#include "kriterator.h"

#include "kriterator.inc"

template class krDefault_NSC<short>;
template class krDefault_NSC<unsigned int>;
KR_STEP_TEMPLATES(, int)
KR_STEP_TEMPLATES(, short)
KR_STEP_TEMPLATES(, unsigned int)
