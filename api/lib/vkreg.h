// Registration of a library function: one line makes the four functions that carry its call into the timing code, and
// the test object. The measured region holds the call itself, pasted as written.
//
//   VK_REG(TimConv, veksConvPartial_16s32s, veksConvPartial_16s32s(src1, src2, dst, lenght.value()))
//   VK_REG_I(TimFFT, veksFFTFwd_RToPerm_GSMAMR_16s_I, veksFFTFwd_RToPerm_GSMAMR_16s_I(data), memcpy(data, saved, size))
#pragma once

#include "kr.h"
#include "krcputick.h"
#include "vktest.h"

// Tests that are no vkTest show their names by the same grammar.
static const bool regNameCells = krRegNameCells(vkNameCells) != 0;

/// Ticks of the intervals of one measurement.
struct vkStopwatch {
    bool reset = false;   ///< the total starts anew with the next interval
    bool stopped = false; ///< the interval has been added
    unsigned long long start = 0;
    unsigned long long total = 0;
    int intervals = 0;

    void clear() {
        total = 0;
        intervals = 0;
        reset = false;
    }
    void stop(unsigned long long tick) {
        if (!stopped) {
            total += tick - start;
            stopped = true;
            ++intervals;
        }
    }
    long long clocks() const { return krCpuTicker::getClockFactor() * static_cast<long long>(total); }
};

/// The path of a source file without its extension.
inline krString vkSourcePath(const char* file) {
    const krString path = file;
    return path.getFileDir() + path.getFileTitle();
}

// Tests of equal code keep loops of their own: who counts instructions by the loop's name finds each.
#if defined(__GNUC__) && !defined(__clang__)
#define VK_OWN_LOOP __attribute__((no_icf))
#else
#define VK_OWN_LOOP
#endif

#define VK_REG_FUNCTIONS(function, call, init)                                                                         \
    static int tcall_##function() {                                                                                    \
        return call;                                                                                                   \
    }                                                                                                                  \
    VK_OWN_LOOP static krResult tim_##function##_loop(int calls, long long* clocks) {                                  \
        init;                                                                                                          \
        int status = call;                                                                                             \
        vkStopwatch watch;                                                                                             \
        watch.start = vek_get_cyclon_counter();                                                                        \
        for (int pass = 0; pass < calls; ++pass) {                                                                     \
            init;                                                                                                      \
            status = call;                                                                                             \
        }                                                                                                              \
        watch.stop(vek_get_cyclon_counter());                                                                          \
        *clocks = calls > 0 ? watch.clocks() : 0;                                                                      \
        return vkTest::checkStatus(status, #function);                                                                 \
    }                                                                                                                  \
    static krResult tim_##function##_stat(int* calls, long long* minClocks) {                                          \
        vkStopwatch watch;                                                                                             \
        watch.stopped = true;                                                                                          \
        watch.reset = true;                                                                                            \
        int kept = 0;                                                                                                  \
        int pass = -1;                                                                                                 \
        for (;; ++pass) {                                                                                              \
            if (pass == 0) {                                                                                           \
                watch.clear();                                                                                         \
                watch.stopped = false;                                                                                 \
                watch.start = vek_get_cyclon_counter();                                                                \
            }                                                                                                          \
            if (pass >= *calls && watch.clocks() >= *minClocks) {                                                      \
                break;                                                                                                 \
            }                                                                                                          \
            init;                                                                                                      \
            if (watch.reset) {                                                                                         \
                watch.clear();                                                                                         \
            }                                                                                                          \
            watch.stopped = false;                                                                                     \
            watch.start = vek_get_cyclon_counter();                                                                    \
            const int status = call;                                                                                   \
            watch.stop(vek_get_cyclon_counter());                                                                      \
            if (status != 0) {                                                                                         \
                kept = status;                                                                                         \
            }                                                                                                          \
            if (status < 0) {                                                                                          \
                break;                                                                                                 \
            }                                                                                                          \
        }                                                                                                              \
        *calls = pass;                                                                                                 \
        *minClocks = watch.clocks();                                                                                   \
        return vkTest::checkStatus(kept, #function);                                                                   \
    }

#define VK_REG_OBJECT(class, function, init, comment, macro)                                                           \
    static const bool reg_##function =                                                                                 \
        krRegTest(new class(tcall_##function, init, tim_##function##_loop, tim_##function##_stat, #function,           \
                            vkSourcePath(__FILE__), #class "/" comment "/" macro)) != 0;

/// A function whose call needs no preparation.
#define VK_REG(class, function, call) VK_REG_MODE(class, function, call, "")
/// The same with a comment that tells which mode of the function the class measures.
#define VK_REG_MODE(class, function, call, comment)                                                                    \
    VK_REG_FUNCTIONS(function, call, static_cast<void>(0))                                                             \
    VK_REG_OBJECT(class, function, nullptr, comment, "VK_REG")
/// A function whose input is restored by `init` before each call.
#define VK_REG_I(class, function, call, init)                                                                          \
    static int tinit_##function() {                                                                                    \
        init;                                                                                                          \
        return 0;                                                                                                      \
    }                                                                                                                  \
    VK_REG_FUNCTIONS(function, call, init)                                                                             \
    VK_REG_OBJECT(class, function, tinit_##function, "", "VK_REG_I")
