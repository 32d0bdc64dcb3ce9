// Name of the inline namespace for what is compiled at each instruction level, and for what is compiled once.
// VEK_LEVEL is set by the build for the files k_*.cpp only.
#pragma once

#if !defined(VEK_LEVEL)
#define VEK_LEVEL_NS common
#elif VEK_LEVEL == 0
#define VEK_LEVEL_NS level0
#elif VEK_LEVEL == 1
#define VEK_LEVEL_NS level1
#elif VEK_LEVEL == 2
#define VEK_LEVEL_NS level2
#elif VEK_LEVEL == 3
#define VEK_LEVEL_NS level3
#else
#error "VEK_LEVEL is 0, 1, 2 or 3"
#endif

// For the short steps of kernels, which must not cost a call. Sanitizer builds leave them apart: laid into each other
// with their checks, the transforms take minutes to compile.
#ifdef __SANITIZE_ADDRESS__
#define VEK_INLINE inline
#else
#define VEK_INLINE [[gnu::always_inline]] inline
#endif

// For steps of many vectors, whole transforms of a few numbers: laid into each other only where a vector is a register.
// At the plain level, where a vector is eight words, it is slower and takes ten times as long to compile.
#if defined(VEK_LEVEL) && VEK_LEVEL == 0
#define VEK_INLINE_WIDE inline
#else
#define VEK_INLINE_WIDE VEK_INLINE
#endif
