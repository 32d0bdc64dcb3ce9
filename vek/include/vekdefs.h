// Types, statuses, processor types and speech enumerations of the Vek library.
// Every public header of the library builds on this one; it declares no function.
#pragma once

#include <stdint.h>

#if defined(__GNUC__)
#define VEK_API __attribute__((visibility("default")))
#else
#define VEK_API
#endif

typedef uint8_t Vek8u;
typedef int8_t Vek8s;
typedef uint16_t Vek16u;
typedef int16_t Vek16s;
typedef uint32_t Vek32u;
typedef int32_t Vek32s;
typedef uint64_t Vek64u;
typedef int64_t Vek64s;
typedef float Vek32f;
typedef double Vek64f;

typedef struct {
    Vek16s re, im;
} Vek16sc;

typedef struct {
    Vek32s re, im;
} Vek32sc;

typedef struct {
    Vek32f re, im;
} Vek32fc;

typedef struct {
    Vek64f re, im;
} Vek64fc;

// A width and a height, in elements.
typedef struct {
    int width, height;
} VekiSize;

// What a library says about itself. The three texts are joined with ", " for display.
typedef struct {
    int major, minor, majorBuild, build;
    const char* Name;
    const char* Version;
    const char* BuildDate;
} VekLibraryVersion;

// Result of a call: 0 success, negative error (nothing has been written), positive warning (the result is there).
typedef int VekStatus;

// The one table of statuses: row(name, value, text).
// clang-format off
#define VEK_STATUSES(row)                                                                                              \
    row(vekStsNoErr, 0, "no error")                                                                                    \
    row(vekStsNullPtrErr, -10, "null pointer")                                                                         \
    row(vekStsSizeErr, -11, "size out of range")                                                                       \
    row(vekStsLengthErr, -12, "length out of range")                                                                   \
    row(vekStsScaleRangeErr, -13, "scale factor out of range")                                                         \
    row(vekStsRangeErr, -14, "value out of range")                                                                     \
    row(vekStsBadArgErr, -15, "bad argument")                                                                          \
    row(vekStsOutOfRangeErr, -16, "index or offset out of range")                                                      \
    row(vekStsNoMemErr, -17, "no memory")                                                                              \
    row(vekStsBitRateErr, -18, "unknown bit rate")                                                                     \
    row(vekStsModeErr, -19, "unknown mode")                                                                            \
    row(vekStsLawErr, -20, "unknown companding law")                                                                   \
    row(vekStsFftOrderErr, -21, "transform length not supported")                                                      \
    row(vekStsStateErr, -22, "state has not been initialised")                                                         \
    row(vekStsBitstreamErr, -23, "bit stream holds no valid code")                                                     \
    row(vekStsFilterOrderErr, -24, "filter order not supported")                                                       \
    row(vekStsStepErr, -25, "step out of range")                                                                       \
    row(vekStsStreamEndErr, -26, "bit stream ends too early")                                                          \
    row(vekStsCpuNotSupportedErr, -40, "this machine lacks what the processor type needs")                             \
    row(vekStsUnknownCpuErr, -41, "unknown processor type")                                                            \
    row(vekStsNoCacheInfoErr, -42, "the processor does not tell its cache sizes")                                      \
    row(vekStsOverflow, 1, "a result has been saturated")                                                              \
    row(vekStsSingleThread, 2, "the library works on one thread")                                                      \
    row(vekStsUnstableFilter, 3, "the filter is not stable, the last stable one is given")                             \
    row(vekStsNoOperation, 4, "nothing to do")                                                                         \
    row(vekStsDivByZero, 5, "a divisor was zero, the largest value is given")
// clang-format on

enum {
#define VEK_ROW(name, value, text) name = value,
    VEK_STATUSES(VEK_ROW)
#undef VEK_ROW
};

// Type of a processor: one of the codes below.
typedef int VekCpuType;

// The published list of processor types: row(code, label, name, need). `need` is the instruction level, as a code of
// 64 to 71 or 96, that a machine must have for vekInitCpu to accept the row; 0 needs nothing.
// The constants are vekCpu<label>.
// clang-format off
#define VEK_CPU_TYPES(row)                                                                                             \
    row(0, Unknown, "Unknown processor", 0)                                                                            \
    row(1, G1, "Orvan generation 1", 0)                                                                                \
    row(2, G2, "Orvan generation 2", 0)                                                                                \
    row(3, G3, "Orvan generation 3", 0)                                                                                \
    row(4, G4, "Orvan generation 4", 64)                                                                               \
    row(5, G5, "Orvan generation 5", 64)                                                                               \
    row(6, G6, "Orvan generation 6", 64)                                                                               \
    row(7, G7, "Orvan generation 7", 65)                                                                               \
    row(8, G8, "Orvan generation 8", 65)                                                                               \
    row(9, G9, "Orvan generation 9", 65)                                                                               \
    row(10, G10, "Orvan generation 10", 66)                                                                            \
    row(11, G11, "Orvan generation 11", 66)                                                                            \
    row(16, G16, "Orvan generation 16, server line", 65)                                                               \
    row(17, G17, "Orvan generation 17, server line", 66)                                                               \
    row(32, G32, "Orvan generation 32", 66)                                                                            \
    row(33, G33, "Orvan generation 33, two cores", 67)                                                                 \
    row(34, G34, "Orvan generation 34, four cores", 67)                                                                \
    row(35, G35, "Orvan generation 2 series 35", 68)                                                                   \
    row(36, G36, "Orvan generation 36, low power", 67)                                                                 \
    row(37, G37, "Orvan generation 37", 69)                                                                            \
    row(38, G38, "Orvan Next generation 38", 70)                                                                       \
    row(64, V1, "Processor supporting SSX level 1", 64)                                                                \
    row(65, V2, "Processor supporting SSX level 2", 65)                                                                \
    row(66, V3, "Processor supporting SSX level 3", 66)                                                                \
    row(67, V4, "Processor supporting SSX level 4", 67)                                                                \
    row(68, V5, "Processor supporting SSX level 5", 68)                                                                \
    row(69, V6, "Processor supporting SSX level 6", 69)                                                                \
    row(70, V7, "Processor supporting the 256-bit float extension", 70)                                                \
    row(71, V8, "Processor supporting the 256-bit integer extension", 71)                                              \
    row(96, X64, "Processor supporting the 64-bit extension", 96)
// clang-format on

enum {
#define VEK_ROW(code, label, name, need) vekCpu##label = code,
    VEK_CPU_TYPES(VEK_ROW)
#undef VEK_ROW
};

// Bit rates of the speech codecs, in bit/s; VEK_SPCHBR_DTX stands for a frame of discontinuous transmission.
typedef enum {
    VEK_SPCHBR_4750,
    VEK_SPCHBR_5150,
    VEK_SPCHBR_5300,
    VEK_SPCHBR_5900,
    VEK_SPCHBR_6300,
    VEK_SPCHBR_6600,
    VEK_SPCHBR_6700,
    VEK_SPCHBR_7400,
    VEK_SPCHBR_7950,
    VEK_SPCHBR_8850,
    VEK_SPCHBR_9600,
    VEK_SPCHBR_10200,
    VEK_SPCHBR_12200,
    VEK_SPCHBR_12650,
    VEK_SPCHBR_12800,
    VEK_SPCHBR_14250,
    VEK_SPCHBR_15850,
    VEK_SPCHBR_16000,
    VEK_SPCHBR_18250,
    VEK_SPCHBR_19850,
    VEK_SPCHBR_23050,
    VEK_SPCHBR_23850,
    VEK_SPCHBR_24000,
    VEK_SPCHBR_32000,
    VEK_SPCHBR_40000,
    VEK_SPCHBR_DTX
} VekSpchBitRate;

// Companding of PCM samples.
typedef enum { VEK_PCM_MULAW, VEK_PCM_ALAW, VEK_PCM_LINEAR } VekPCMLaw;

// Sampling frequency in Hz.
typedef enum {
    VEK_PCM_FREQ_8000 = 8000,
    VEK_PCM_FREQ_11025 = 11025,
    VEK_PCM_FREQ_16000 = 16000,
    VEK_PCM_FREQ_22050 = 22050,
    VEK_PCM_FREQ_32000 = 32000
} VekPCMFrequency;
