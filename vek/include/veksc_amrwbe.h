// Speech coding library of Vek: transforms, resampling and quantisers of AMR-WB+.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
