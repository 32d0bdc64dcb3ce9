// Speech coding library of Vek: G.728.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
