// Speech coding library of Vek: wide-order filters, hybrid window, LSP quantiser of Annex E, post-filters and tilt of G.729.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
