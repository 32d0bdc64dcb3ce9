// Filters of G.729.1: split and reunion of the bands, high-pass and low-pass.
#include "vkc.h"

namespace {

vkVector pSrcLowBand, pSrcHighBand, pDst, pSrc, pDstLowBand, pDstHighBand, pSrcDst;
krStepIterator<int> len;
vkcScaleIterator scaleFactor;
Vek8u* pState;
Vek8u* pStateHi;
Vek8u* pStateLo;

constexpr Vek16s GainSwitching = 16384;

class Tim7291flt : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "len");
        vkcScales(scaleFactor, "scaleFactor", m_func, -1, 0, 1);
        initVectors({&pSrcLowBand, &pSrcHighBand, &pDst, &pSrc, &pDstLowBand, &pDstHighBand, &pSrcDst}, vkArg::src);
        if (m_high) {
            len.setList({160});
            return walk({&len, &scaleFactor});
        }
        if (m_encode) {
            len.set(160, 320, 160, '+');
        } else {
            len.set(80, 160, 80, '+');
        }
        return walk({&len});
    }

    bool makeData() override {
        if (!makeStates()) {
            return false;
        }
        const long long size = m_grid.room(len);
        if (m_func.contains("veksQMFDecode_G7291_16s")) {
            // Two samples for each pair of the bands.
            return pSrcLowBand.createVector(size, setRand, -2048, 2048) &&
                   pSrcHighBand.createVector(size, setRand, -2048, 2048) && pDst.createVector(2 * size, setZero, 0, 0);
        }
        if (m_encode) {
            return pSrc.createVector(size, setRand, -2048, 2048) && pDstLowBand.createVector(size, setZero, 0, 0) &&
                   pDstHighBand.createVector(size, setZero, 0, 0);
        }
        return pSrcDst.createVector(size, setRand, -128, 128);
    }

    double getDivisor() override { return len.value(); }

    virtual bool makeStates() {
        if (m_high) {
            return initState(pStateHi, veksFilterHighpassGetStateSize_G7291_16s, veksFilterHighpassInit_G7291_16s);
        }
        if (m_func.contains("veksFilterLowpass_G7291_16s_I")) {
            return initState(pStateLo, veksFilterLowpassGetStateSize_G7291_16s, veksFilterLowpassInit_G7291_16s);
        }
        return initState(pState, veksQMFGetStateSize_G7291_16s, veksQMFInit_G7291_16s);
    }

private:
    const bool m_encode = m_func.contains("veksQMFEncode_G7291_16s");
    const bool m_high = m_func.contains("veksFilterHighpass_G7291_16s_ISfs");
};

} // namespace

VK_REG(Tim7291flt, veksFilterHighpass_G7291_16s_ISfs,
       veksFilterHighpass_G7291_16s_ISfs(pSrcDst.m_16s, len.value(), pStateHi, scaleFactor.value()))
VK_REG(Tim7291flt, veksFilterLowpass_G7291_16s_I,
       veksFilterLowpass_G7291_16s_I(pSrcDst.m_16s, len.value(), pStateLo, 2))
VK_REG(Tim7291flt, veksQMFEncode_G7291_16s,
       veksQMFEncode_G7291_16s(pSrc.m_16s, len.value(), pDstLowBand.m_16s, pDstHighBand.m_16s, pState))
VK_REG(Tim7291flt, veksQMFDecode_G7291_16s,
       veksQMFDecode_G7291_16s(pSrcLowBand.m_16s, pSrcHighBand.m_16s, GainSwitching, len.value(), pDst.m_16s, pState))
