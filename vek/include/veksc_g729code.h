// Speech coding library of Vek: fixed codebook searches, noise excitation and gains of G.729, its annexes D, E and I among them.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
