// Noise excitation of G.729 Annex B.
#include "vkc.h"

namespace {

vkVector pSeed, pPos, pSign, pExc;
krStepIterator<int> lenght;

class TimRndCode : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").set(4, 40, 4, '+');
        initVectors({&pSeed, &pPos, &pSign}, vk16s);
        initVectors({&pExc}, m_func.contains("_16s32f") ? vk32f : vk16s);
        return walk({&lenght});
    }

    bool makeData() override {
        return pSeed.createVector(1, setValue, 1000, 0) && pPos.createVector(lenght.value(), setZero, 0, 0) &&
               pSign.createVector(lenght.value(), setZero, 0, 0) && pExc.createVector(lenght.value(), setZero, 0, 0);
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimRndCode, veksRandomNoiseExcitation_G729B_16s32f,
       veksRandomNoiseExcitation_G729B_16s32f(pSeed.m_16s, pExc.m_32f, lenght.value()))
VK_REG(TimRndCode, veksRandomNoiseExcitation_G729B_16s,
       veksRandomNoiseExcitation_G729B_16s(pSeed.m_16s, pExc.m_16s, lenght.value()))
