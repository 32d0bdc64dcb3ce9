// Speech coding library of Vek: DTX, open-loop pitch, LSP quantiser and voice activity of GSM AMR.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
