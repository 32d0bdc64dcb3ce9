// Speech coding library of Vek: filters, conversions, ISF quantisers, voice activity and DTX of AMR-WB.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
