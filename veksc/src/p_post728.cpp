// Postfilter of G.728.
#include "vkc.h"

namespace {

vkVector pCoeff, pSrc, pDst;
krStepIterator<int> len;
int dataSize;
VeksPostFilterState_G728* pMem;

constexpr int speech = 247;
constexpr int before = 24;
constexpr int vectorLength = 5;
// A voiced vector: the longest period that the samples before have room for, a tap of 0.15.
constexpr int kp = before;
constexpr Vek16s gl = 14247;
constexpr Vek16s glb = 8548;
constexpr Vek16s tiltz = 1600;

class TimPost728 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "").setList({20});
        initVectors({&pCoeff, &pSrc, &pDst}, vkArg::src);
        return walk({&len}) && vkcDone(veksPostFilterGetStateSize_G728_16s(&dataSize));
    }

    bool makeData() override {
        return hold(pMem, veksMalloc_8u(dataSize), veksFree) && vkcDone(veksPostFilterInit_G728_16s(pMem)) &&
               pCoeff.createVector(m_grid.room(len), setRand, -2048, 2048) &&
               pSrc.createVector(speech, setRand, -2048, 2048) && pDst.createVector(vectorLength, setZero, 0, 0);
    }

    double getDivisor() override { return vectorLength; }
};

} // namespace

VK_REG(TimPost728, veksPostFilter_G728_16s,
       veksPostFilter_G728_16s(gl, glb, kp, tiltz, pCoeff.m_16s, pSrc.m_16s + before, pDst.m_16s, pMem))
