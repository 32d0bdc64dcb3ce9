// Encoder of G.726, by rate.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
vkVector pTmp;
krStepIterator<int> len;
krEnumIterator<VekSpchBitRate> mode;
vkcGrid grid;
VeksCodecState_G726* pEncMem;
int dataSize;

class TimEnc : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimEnc::canStart() {
    vkcRebuild(len, "Lenght").set(4, 32, 2, '*');
    vkcRebuild(mode, "BitRate");
    for (const VekSpchBitRate rate : {VEK_SPCHBR_16000, VEK_SPCHBR_24000, VEK_SPCHBR_32000, VEK_SPCHBR_40000}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    grid.begin({&len, &mode});
    pSrc.init(m_func, vkArg::src);
    pDst.init(m_func, vkArg::dst);
    pTmp.init(vk8u);
    return vkcDone(veksEncodeGetStateSize_G726_16s8u(&dataSize));
}

bool TimEnc::makeData() {
    if (!pSrc.createVector(len.value(), setRand, -4096, 4096) || !pDst.createVector(len.value(), setZero, 0, 0) ||
        !pTmp.createVector(dataSize, setZero, 0, 0)) {
        return false;
    }
    pEncMem = reinterpret_cast<VeksCodecState_G726*>(veksMalloc_8u(dataSize));
    return pEncMem != nullptr &&
           vkcDone(veksEncodeInit_G726_16s8u(reinterpret_cast<VeksCodecState_G726*>(pTmp.m_8u), mode.value()));
}

void TimEnc::flushData() {
    veksFree(pEncMem);
    pEncMem = nullptr;
    for (vkVector* vector : {&pTmp, &pDst, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG_I(TimEnc, veksEncode_G726_16s8u, veksEncode_G726_16s8u(pEncMem, pSrc.m_16s, pDst.m_8u, len.value()),
         vkcRestore(pEncMem, pTmp.m_8u, dataSize))
