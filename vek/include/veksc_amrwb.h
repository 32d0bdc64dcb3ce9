// Speech coding library of Vek: codebook searches and decoders, open-loop pitch and gains of AMR-WB.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
