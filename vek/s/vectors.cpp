// Memory, copy, zero and set for the element types of the library.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "veks.h"

#include "core/version.h"

namespace {

constexpr size_t kAlign = 64;

template <typename T>
T* allocate(int len) {
    if (len < 1) {
        return nullptr;
    }
    const size_t bytes = (static_cast<size_t>(len) * sizeof(T) + kAlign - 1) / kAlign * kAlign;
    return static_cast<T*>(std::aligned_alloc(kAlign, bytes));
}

VekStatus check(const void* p, int len) {
    if (p == nullptr) {
        return vekStsNullPtrErr;
    }
    return len < 1 ? vekStsSizeErr : vekStsNoErr;
}

template <typename T>
VekStatus copy(const T* src, T* dst, int len) {
    if (src == nullptr) {
        return vekStsNullPtrErr;
    }
    const VekStatus status = check(dst, len);
    if (status == vekStsNoErr) {
        std::memcpy(dst, src, static_cast<size_t>(len) * sizeof(T));
    }
    return status;
}

template <typename T>
VekStatus fill(T val, T* dst, int len) {
    const VekStatus status = check(dst, len);
    if (status == vekStsNoErr) {
        std::fill_n(dst, len, val);
    }
    return status;
}

} // namespace

#define VEK_VECTOR_FUNCTIONS(t)                                                                                        \
    Vek##t* veksMalloc_##t(int len) {                                                                                  \
        return allocate<Vek##t>(len);                                                                                  \
    }                                                                                                                  \
    VekStatus veksCopy_##t(const Vek##t* pSrc, Vek##t* pDst, int len) {                                                \
        return copy(pSrc, pDst, len);                                                                                  \
    }                                                                                                                  \
    VekStatus veksZero_##t(Vek##t* pDst, int len) {                                                                    \
        return fill(Vek##t{}, pDst, len);                                                                              \
    }                                                                                                                  \
    VekStatus veksSet_##t(Vek##t val, Vek##t* pDst, int len) {                                                         \
        return fill(val, pDst, len);                                                                                   \
    }

VEK_VECTOR_FUNCTIONS(8u)
VEK_VECTOR_FUNCTIONS(16s)
VEK_VECTOR_FUNCTIONS(32s)
VEK_VECTOR_FUNCTIONS(32f)
VEK_VECTOR_FUNCTIONS(64f)
VEK_VECTOR_FUNCTIONS(16sc)
VEK_VECTOR_FUNCTIONS(32sc)
VEK_VECTOR_FUNCTIONS(32fc)

void veksFree(void* ptr) {
    std::free(ptr);
}

const VekLibraryVersion* veksGetLibVersion(void) {
    static const VekLibraryVersion version = VEK_VERSION_RECORD("libveks");
    return &version;
}
