// Encoder of G.726, by rate.
#include "vkc.h"

namespace {

vkVector pSrc, pDst, pTmp;
krStepIterator<int> len;
krEnumIterator<VekSpchBitRate> mode;
VeksCodecState_G726* pEncMem;
int dataSize;

class TimEnc : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(4, 32, 2, '*');
        vkcModes(vkcRebuild(mode, "BitRate"), {VEK_SPCHBR_16000, VEK_SPCHBR_24000, VEK_SPCHBR_32000, VEK_SPCHBR_40000});
        initVectors({&pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        initVectors({&pTmp}, vk8u);
        return walk({&len, &mode}) && vkcDone(veksEncodeGetStateSize_G726_16s8u(&dataSize));
    }

    bool makeData() override {
        if (!pSrc.createVector(len.value(), setRand, -4096, 4096) || !pDst.createVector(len.value(), setZero, 0, 0) ||
            !pTmp.createVector(dataSize, setZero, 0, 0)) {
            return false;
        }
        return hold(pEncMem, veksMalloc_8u(dataSize), veksFree) &&
               vkcDone(veksEncodeInit_G726_16s8u(reinterpret_cast<VeksCodecState_G726*>(pTmp.m_8u), mode.value()));
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG_I(TimEnc, veksEncode_G726_16s8u, veksEncode_G726_16s8u(pEncMem, pSrc.m_16s, pDst.m_8u, len.value()),
         vkcRestore(pEncMem, pTmp.m_8u, dataSize))
