// G.722: filter bank, sub-band ADPCM, and steps of the concealment of lost frames.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pSrc, pDst, delay, pSrcDst, mem;
krStepIterator<int> len, mode;
VeksCodecState_G722* pEncMem;
VeksCodecState_G722* pDecMem;
int fr_class;

// Samples that the decimation reads before its first output and after its last, those before a pitch period, and the
// least history that the filter bank takes.
constexpr int beside = 5;
constexpr int before = 8;
constexpr int bank = 22;

class TimG722SB : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        if (m_classify) {
            vkcRebuild(len, "valDelay").set(80, 143, 63, '+');
        } else {
            vkcRebuild(len, "len").set(80, 320, 80, '+');
        }
        initVectors({&pSrc, &pDst, &delay, &pSrcDst, &mem}, vkArg::src);
        if (m_decode) {
            vkcRebuild(mode, "mode").set(1, 3, 1, '+');
            return walk({&len, &mode});
        }
        vkcFix(mode, 1);
        return walk({&len});
    }

    bool makeData() override {
        // The state comes last: where a vector fails nobody frees it.
        if (m_func.contains("veksFilterHighband_G722_16s_I") || m_classify) {
            return pSrcDst.createVector(vkcSize(len) + (m_classify ? before : 0), setOne, 0, 0) &&
                   mem.createVector(2, setOne, 0, 0) && createStates();
        }
        return pSrc.createVector(vkcSize(len) + (m_func.contains("veksDownsampleFilter_G722_16s") ? 2 * beside : 0),
                                 setOne, 0, 0) &&
               pDst.createVector(len.value(), setZero, 0, 0) &&
               delay.createVector(std::max(len.value(), bank), setOne, 0, 0) && createStates();
    }

    double getDivisor() override { return len.value(); }

private:
    bool createStates() {
        if (m_func.contains("veksSBADPCMEncode_G722_16s")) {
            return initState(pEncMem, veksSBADPCMEncodeStateSize_G722_16s, veksSBADPCMEncodeInit_G722_16s);
        }
        if (m_decode || m_classify) {
            return initState(pDecMem, veksSBADPCMDecodeStateSize_G722_16s, veksSBADPCMDecodeInit_G722_16s);
        }
        return true;
    }

    const bool m_classify = m_func.contains("veksClassifyFrame_G722_16s_I");
    const bool m_decode = m_func.contains("veksSBADPCMDecode_G722_16s");
};

} // namespace

VK_REG(TimG722SB, veksDownsampleFilter_G722_16s,
       veksDownsampleFilter_G722_16s(pSrc.m_16s + beside, len.value(), pDst.m_16s))
VK_REG(TimG722SB, veksFilterHighband_G722_16s_I, veksFilterHighband_G722_16s_I(pSrcDst.m_16s, len.value(), mem.m_16s))
VK_REG(TimG722SB, veksClassifyFrame_G722_16s_I,
       veksClassifyFrame_G722_16s_I(pSrcDst.m_16s + before, len.value(), &fr_class, pDecMem))
VK_REG(TimG722SB, veksQMFDecode_G722_16s, veksQMFDecode_G722_16s(pSrc.m_16s, pDst.m_16s, len.value(), delay.m_16s))
VK_REG(TimG722SB, veksSBADPCMDecode_G722_16s,
       veksSBADPCMDecode_G722_16s(pSrc.m_16s, pDst.m_16s, len.value(), mode.value(), pDecMem))
VK_REG(TimG722SB, veksQMFEncode_G722_16s, veksQMFEncode_G722_16s(pSrc.m_16s, pDst.m_16s, len.value(), delay.m_16s))
VK_REG(TimG722SB, veksSBADPCMEncode_G722_16s, veksSBADPCMEncode_G722_16s(pSrc.m_16s, pDst.m_16s, len.value(), pEncMem))
