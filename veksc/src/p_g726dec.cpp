// Decoder of G.726, by rate and law of its samples.
#include "vkc.h"

namespace {

vkVector pSrc, pDst, pTmp;
krStepIterator<int> len;
krEnumIterator<VekSpchBitRate> mode;
krEnumIterator<VekPCMLaw> law;
VeksCodecState_G726* pDecMem;
int dataSize;

class TimDen : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(4, 32, 2, '*');
        vkcModes(vkcRebuild(mode, "BitRate"), {VEK_SPCHBR_16000, VEK_SPCHBR_24000, VEK_SPCHBR_32000, VEK_SPCHBR_40000});
        vkcRebuild(law, "PCMLaw");
        vkcModes(law, {VEK_PCM_MULAW, VEK_PCM_ALAW, VEK_PCM_LINEAR});
        initVectors({&pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        initVectors({&pTmp}, vk8u);
        return walk({&len, &mode, &law}) && vkcDone(veksDecodeGetStateSize_G726_8u16s(&dataSize));
    }

    bool makeData() override {
        if (!pSrc.createVector(len.value(), setRand, 0, 3) || !pDst.createVector(len.value(), setZero, 0, 0) ||
            !pTmp.createVector(dataSize, setZero, 0, 0)) {
            return false;
        }
        return hold(pDecMem, veksMalloc_8u(dataSize), veksFree) &&
               vkcDone(veksDecodeInit_G726_8u16s(reinterpret_cast<VeksCodecState_G726*>(pTmp.m_8u), mode.value(),
                                                 law.value()));
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG_I(TimDen, veksDecode_G726_8u16s, veksDecode_G726_8u16s(pDecMem, pSrc.m_8u, pDst.m_16s, len.value()),
         vkcRestore(pDecMem, pTmp.m_8u, dataSize))
