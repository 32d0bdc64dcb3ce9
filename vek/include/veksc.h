// Speech coding library of Vek: all families in one include.
// Each family has its own header; this one only gathers them.
#pragma once

#include "vekdefs.h"
#include "veksc_signal.h"

#include "veksc_amrwb.h"
#include "veksc_amrwbe.h"
#include "veksc_amrwberes.h"
#include "veksc_amrwbflt.h"
#include "veksc_ec.h"
#include "veksc_filter.h"
#include "veksc_g722.h"
#include "veksc_g723.h"
#include "veksc_g728.h"
#include "veksc_g729.h"
#include "veksc_g7291.h"
#include "veksc_g7291bwe.h"
#include "veksc_g729code.h"
#include "veksc_g729lp.h"
#include "veksc_g729pitch.h"
#include "veksc_g729post.h"
#include "veksc_gsmamr.h"
#include "veksc_gsmamrdtx.h"
#include "veksc_gsmfr.h"
#include "veksc_rta.h"

#ifdef __cplusplus
extern "C" {
#endif

// Record of this library; static, never null.
VEK_API const VekLibraryVersion* vekscGetLibVersion(void);

#ifdef __cplusplus
}
#endif
