// Decoder of G.726, by rate and law of its samples.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
vkVector pTmp;
krStepIterator<int> len;
krEnumIterator<VekSpchBitRate> mode;
krEnumIterator<VekPCMLaw> law;
vkcGrid grid;
VeksCodecState_G726* pDecMem;
int dataSize;

class TimDen : public prTest {
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

bool TimDen::canStart() {
    vkcRebuild(len, "Lenght").set(4, 32, 2, '*');
    vkcRebuild(mode, "BitRate");
    for (const VekSpchBitRate rate : {VEK_SPCHBR_16000, VEK_SPCHBR_24000, VEK_SPCHBR_32000, VEK_SPCHBR_40000}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    vkcRebuild(law, "PCMLaw");
    for (const VekPCMLaw word : {VEK_PCM_MULAW, VEK_PCM_ALAW, VEK_PCM_LINEAR}) {
        law.add(word);
        law.addValidation(word);
    }
    grid.begin({&len, &mode, &law});
    pSrc.init(m_func, vkArg::src);
    pDst.init(m_func, vkArg::dst);
    pTmp.init(vk8u);
    return vkcDone(veksDecodeGetStateSize_G726_8u16s(&dataSize));
}

bool TimDen::makeData() {
    if (!pSrc.createVector(len.value(), setRand, 0, 3) || !pDst.createVector(len.value(), setZero, 0, 0) ||
        !pTmp.createVector(dataSize, setZero, 0, 0)) {
        return false;
    }
    pDecMem = reinterpret_cast<VeksCodecState_G726*>(veksMalloc_8u(dataSize));
    return pDecMem != nullptr && vkcDone(veksDecodeInit_G726_8u16s(reinterpret_cast<VeksCodecState_G726*>(pTmp.m_8u),
                                                                   mode.value(), law.value()));
}

void TimDen::flushData() {
    veksFree(pDecMem);
    pDecMem = nullptr;
    for (vkVector* vector : {&pTmp, &pDst, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG_I(TimDen, veksDecode_G726_8u16s, veksDecode_G726_8u16s(pDecMem, pSrc.m_8u, pDst.m_16s, len.value()),
         vkcRestore(pDecMem, pTmp.m_8u, dataSize))
