// Speech coding library of Vek: G.729.1.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
