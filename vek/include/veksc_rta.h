// Speech coding library of Vek: the real-time audio codec.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
