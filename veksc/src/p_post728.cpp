// Postfilter of G.728.
#include "vkc.h"

namespace {

vkVector pCoeff;
vkVector pSrc;
vkVector pDst;
krStepIterator<int> len;
vkcGrid grid;
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

class TimPost728 : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return vectorLength; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimPost728::canStart() {
    vkcRebuild(len, "").setList({20});
    grid.begin({&len});
    for (vkVector* vector : {&pCoeff, &pSrc, &pDst}) {
        vector->init(m_func, vkArg::src);
    }
    return vkcDone(veksPostFilterGetStateSize_G728_16s(&dataSize));
}

bool TimPost728::makeData() {
    pMem = reinterpret_cast<VeksPostFilterState_G728*>(veksMalloc_8u(dataSize));
    return pMem != nullptr && vkcDone(veksPostFilterInit_G728_16s(pMem)) &&
           pCoeff.createVector(grid.room(len), setRand, -2048, 2048) &&
           pSrc.createVector(speech, setRand, -2048, 2048) && pDst.createVector(vectorLength, setZero, 0, 0);
}

void TimPost728::flushData() {
    for (vkVector* vector : {&pDst, &pSrc, &pCoeff}) {
        vector->deleteVector();
    }
    veksFree(pMem);
    pMem = nullptr;
}

} // namespace

VK_REG(TimPost728, veksPostFilter_G728_16s,
       veksPostFilter_G728_16s(gl, glb, kp, tiltz, pCoeff.m_16s, pSrc.m_16s + before, pDst.m_16s, pMem))
