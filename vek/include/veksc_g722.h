// Speech coding library of Vek: G.722, G.722.1 and G.726.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
