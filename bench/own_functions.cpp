// Functions of known cost.
#include "own.h"

void ownEmpty() {
}

void ownChain(unsigned long* total, unsigned long step) {
    unsigned long sum = *total;
    for (int ten = 0; ten < 10; ++ten) {
#define ADDITION                                                                                                       \
    sum += step;                                                                                                       \
    __asm__ volatile("" : "+r"(sum));
        ADDITION ADDITION ADDITION ADDITION ADDITION ADDITION ADDITION ADDITION ADDITION ADDITION
#undef ADDITION
    }
    *total = sum;
}

int ownGain(const short* from, short* to, int count) {
    for (int i = 0; i < count; ++i) {
        to[i] = static_cast<short>(from[i] * 3 / 2);
    }
    return 0;
}
