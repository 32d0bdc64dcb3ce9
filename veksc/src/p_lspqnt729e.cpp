// Quantiser of the line spectral pairs of G.729 Annex E.
#include "vkc.h"

namespace {

vkVector pSrcLpc, pSrcPrevFreq, pDstQLsf, pDstQLsp, pDstQLspIndex;
krStepIterator<int> lenght;

constexpr int rows = 4;
constexpr int freqCount = 10;
const Vek16s freq_prev_reset[freqCount] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};

class TimLspQnt729e : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "").setList({freqCount});
        initVectors({&pSrcLpc, &pSrcPrevFreq, &pDstQLsf, &pDstQLsp, &pDstQLspIndex}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        return pSrcLpc.createVector(m_grid.room(lenght), setRand, -512, 512) &&
               pSrcPrevFreq.createVector(rows * freqCount, setRand, -512, 512) &&
               pDstQLsf.createVector(m_grid.room(lenght), setZero, 0, 0) &&
               pDstQLsp.createVector(m_grid.room(lenght), setZero, 0, 0) &&
               pDstQLspIndex.createVector(2, setRand, 0, 6) && setData();
    }

    double getDivisor() override { return lenght.value(); }

    virtual bool setData() {
        for (int row = 0; row < rows; ++row) {
            if (!vkcDone(veksCopy_16s(freq_prev_reset, pSrcPrevFreq.m_16s + row * freqCount, freqCount))) {
                return false;
            }
        }
        return true;
    }
};

} // namespace

VK_REG(TimLspQnt729e, veksLSPQuant_G729E_16s,
       veksLSPQuant_G729E_16s(pSrcLpc.m_16s, pSrcPrevFreq.m_16s, pDstQLsf.m_16s, pDstQLsp.m_16s, pDstQLspIndex.m_16s))
