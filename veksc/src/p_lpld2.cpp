// Levinson-Durbin recursion of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrc, pLPC;
krStepIterator<int> lenght;
Vek16s Pk2, pErr;

constexpr Vek16s energy = 32767;

class TimLPCLevinsonDurbin723 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "Lenght").setList({10});
        initVectors({&pSrc, &pLPC}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        if (!pSrc.createVector(m_grid.room(lenght), setValue, 1024, 0) ||
            !pLPC.createVector(m_grid.room(lenght), setZero, 0, 0)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override { return lenght.value(); }
    virtual void setData() { pSrc.m_16s[0] = 16384; }
};

} // namespace

// The energy goes in through the same word that the error comes out of: left to itself it would fall from call to call
// until the recursion breaks off at its first step.
VK_REG_I(TimLPCLevinsonDurbin723, veksLevinsonDurbin_G723_16s,
         veksLevinsonDurbin_G723_16s(pSrc.m_16s, &Pk2, &pErr, pLPC.m_16s), pErr = energy)
