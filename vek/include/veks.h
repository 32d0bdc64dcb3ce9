// Vectors of the Vek library: memory, copy, zero, set.
// Lengths are in elements. Copy, zero and set: vekStsNullPtrErr for a null pointer, vekStsSizeErr for a length below 1.
#pragma once

#include "vekdefs.h"

#ifdef __cplusplus
extern "C" {
#endif

// Record of this library; static, never null.
VEK_API const VekLibraryVersion* veksGetLibVersion(void);

// Memory of len elements, aligned to 64 bytes, content undefined. Null for a length below 1 or without memory.
VEK_API Vek8u* veksMalloc_8u(int len);
VEK_API Vek16s* veksMalloc_16s(int len);
VEK_API Vek32s* veksMalloc_32s(int len);
VEK_API Vek32f* veksMalloc_32f(int len);
VEK_API Vek64f* veksMalloc_64f(int len);
VEK_API Vek16sc* veksMalloc_16sc(int len);
VEK_API Vek32sc* veksMalloc_32sc(int len);
VEK_API Vek32fc* veksMalloc_32fc(int len);

// Gives memory of veksMalloc back; null is allowed.
VEK_API void veksFree(void* ptr);

// pDst[i] = pSrc[i]; the two may not overlap.
VEK_API VekStatus veksCopy_8u(const Vek8u* pSrc, Vek8u* pDst, int len);
VEK_API VekStatus veksCopy_16s(const Vek16s* pSrc, Vek16s* pDst, int len);
VEK_API VekStatus veksCopy_32s(const Vek32s* pSrc, Vek32s* pDst, int len);
VEK_API VekStatus veksCopy_32f(const Vek32f* pSrc, Vek32f* pDst, int len);
VEK_API VekStatus veksCopy_64f(const Vek64f* pSrc, Vek64f* pDst, int len);
VEK_API VekStatus veksCopy_16sc(const Vek16sc* pSrc, Vek16sc* pDst, int len);
VEK_API VekStatus veksCopy_32sc(const Vek32sc* pSrc, Vek32sc* pDst, int len);
VEK_API VekStatus veksCopy_32fc(const Vek32fc* pSrc, Vek32fc* pDst, int len);

// pDst[i] = 0.
VEK_API VekStatus veksZero_8u(Vek8u* pDst, int len);
VEK_API VekStatus veksZero_16s(Vek16s* pDst, int len);
VEK_API VekStatus veksZero_32s(Vek32s* pDst, int len);
VEK_API VekStatus veksZero_32f(Vek32f* pDst, int len);
VEK_API VekStatus veksZero_64f(Vek64f* pDst, int len);
VEK_API VekStatus veksZero_16sc(Vek16sc* pDst, int len);
VEK_API VekStatus veksZero_32sc(Vek32sc* pDst, int len);
VEK_API VekStatus veksZero_32fc(Vek32fc* pDst, int len);

// pDst[i] = val.
VEK_API VekStatus veksSet_8u(Vek8u val, Vek8u* pDst, int len);
VEK_API VekStatus veksSet_16s(Vek16s val, Vek16s* pDst, int len);
VEK_API VekStatus veksSet_32s(Vek32s val, Vek32s* pDst, int len);
VEK_API VekStatus veksSet_32f(Vek32f val, Vek32f* pDst, int len);
VEK_API VekStatus veksSet_64f(Vek64f val, Vek64f* pDst, int len);
VEK_API VekStatus veksSet_16sc(Vek16sc val, Vek16sc* pDst, int len);
VEK_API VekStatus veksSet_32sc(Vek32sc val, Vek32sc* pDst, int len);
VEK_API VekStatus veksSet_32fc(Vek32fc val, Vek32fc* pDst, int len);

#ifdef __cplusplus
}
#endif
