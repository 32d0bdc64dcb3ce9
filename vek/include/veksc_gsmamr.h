// Speech coding library of Vek: codebook searches and decoders, pitch gains, conversions and post-filter of GSM AMR.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
