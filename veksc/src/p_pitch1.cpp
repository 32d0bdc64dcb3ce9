// Adaptive codebook vector of the G.729 decoder.
#include "vkc.h"

namespace {

vkVector pSrcDst, pTmp, pSrcDelay, pDst;
krStepIterator<int> length;
const Vek32s* valPitchLag;
int dataSize;

constexpr int subframe = 40;
// The longest history before the subframe, and what the shortest delays read after it.
constexpr int history = 154;
constexpr int readAhead = 11;
constexpr int floatHistory = 10;

class TimDecAdVector : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(length, "length");
        if (m_func.contains("_32f")) {
            length.set(10, 40, 10, '+');
        } else {
            length.setList({1});
        }
        initVectors({&pSrcDst, &pTmp, &pSrcDelay, &pDst}, vkArg::src);
        if (m_func.contains("_32f")) {
            initVectors({&pSrcDelay}, vk32s); // a delay is no floating number
        }
        return walk({&length});
    }

    bool makeData() override {
        constexpr int size = history + subframe + readAhead;
        dataSize = size * vkVector::item(m_func);
        if (!pSrcDst.createVector(size, setZero, 0, 0) || !pTmp.createVector(size, setRand, -16384, 16384) ||
            !pSrcDelay.createVector(2, setZero, 0, 0) || !pDst.createVector(subframe, setZero, 0, 0)) {
            return false;
        }
        valPitchLag = pSrcDelay.m_32s;
        return true;
    }

    double getDivisor() override { return length.value(); }
};

} // namespace

VK_REG_I(TimDecAdVector, veksDecodeAdaptiveVector_G729_32f_I,
         veksDecodeAdaptiveVector_G729_32f_I(pSrcDelay.m_32s, pSrcDst.m_32f + *valPitchLag + floatHistory),
         vkcRestore(pSrcDst.m_32f, pTmp.m_32f, dataSize))
VK_REG_I(TimDecAdVector, veksDecodeAdaptiveVector_G729_16s,
         veksDecodeAdaptiveVector_G729_16s(pSrcDelay.m_16s, pSrcDst.m_16s, pDst.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG_I(TimDecAdVector, veksDecodeAdaptiveVector_G729_16s_I,
         veksDecodeAdaptiveVector_G729_16s_I(pSrcDelay.m_16s, pSrcDst.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
