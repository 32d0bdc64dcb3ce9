// A program of functions of one's own, as a user would write it: functions of another file and of this one, a crash, an
// exception and a failure. The program tests look at its machine code and at what it writes.
#include "elsewhere.h"

#include <kelvarrig.h>

#include <stdexcept>

namespace {

void empty() {
}

// A hundred additions, each of which waits for the one before.
unsigned long chain(unsigned long first, unsigned long step) {
    unsigned long sum = first;
#define TEN_ADDITIONS(add) add add add add add add add add add add
#define ADDITION                                                                                                       \
    sum += step;                                                                                                       \
    __asm__ volatile("" : "+r"(sum));
    TEN_ADDITIONS(TEN_ADDITIONS(ADDITION))
    return sum;
}

// The compiler sees that this has no effect but its result, which hangs on nothing but the arguments.
int square(int x) {
    return x * x;
}

int gain(const short* src, short* dst, int len) {
    for (int i = 0; i < len; ++i) {
        dst[i] = static_cast<short>(src[i] * 3 / 2);
    }
    return 0;
}

void crash() {
    __asm__ volatile("ud2");
}

void refuse() {
    throw std::runtime_error("there is nothing to do");
}

int fail(int len) {
    return len > 40 ? -7 : 0;
}

void halve(float* samples, int count) {
    for (int i = 0; i < count; ++i) {
        samples[i] *= 0.5F;
    }
}

kr::Param len("len", kr::steps(40, 120, 40));
kr::Vector<short> src(len, kr::random(-1024, 1024));
kr::Vector<short> dst(len);
kr::Vector<float> samples(len, kr::random(-1, 1));
kr::Restored<float> level(len, kr::constant(1));

auto anEmpty = kr::measure<empty>("ownEmpty");
auto anElsewhere = kr::measure<elsewhere>("ownElsewhere");
auto aChain = kr::measure<chain>("ownChain", 1, 3).elements(100, "add");
auto aSquare = kr::measure<square>("ownSquare", 7).returnsValue();
auto aGain = kr::measure<gain>("ownGain", src, dst, len).elements(len);
auto anEnergy = kr::measure<energy>("ownEnergy", samples, len).elements(len).flops(2 * len);
auto aLambda = kr::measure<[](int x) { return elsewhere() + x; }>("ownLambda", 0);
auto aHalve = kr::measure<halve>("ownHalve", level, len).elements(len);
auto aCrash = kr::measure<crash>("ownCrash");
auto aRefusal = kr::measure<refuse>("ownRefuse");
auto aFailure = kr::measure<fail>("ownFail", len);

} // namespace
