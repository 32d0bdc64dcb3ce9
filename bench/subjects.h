// The functions that the comparison measures, with their data: the same calls for every harness.
#pragma once

/// Returns 0 and does nothing; never inlined.
int subjectEmpty();
/// Dot products of 40 and 240 elements of 16 bits.
int subjectDot40();
int subjectDot240();
/// Autocorrelation of 240 samples, 11 lags.
int subjectAutoCorr();
/// Correlation matrix of 616 elements from an impulse response of 40 samples.
int subjectMatrix();
/// Synthesis filter of order 10 over 40 samples.
int subjectSynthesis();
/// Something of some 30 microseconds: autocorrelation of 4096 samples, 64 lags.
int subjectLong();

struct Subject {
    const char* name;
    int (*call)();
};
constexpr int subjectCount = 7;
extern const Subject subjects[subjectCount];
