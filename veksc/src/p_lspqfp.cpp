// Quantiser of the line spectral pairs of G.729 Annex E, floating.
#include "vkc.h"

namespace {

vkVector pSrcLsp, pSrcDstPrevFreq, pDstQLsf, pDstQLsp, pDstQLspIndex;
krStepIterator<int> lenght;

class TimingLSPQnt : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({10});
        initVectors({&pSrcLsp, &pSrcDstPrevFreq, &pDstQLsf, &pDstQLsp}, vkArg::src);
        initVectors({&pDstQLspIndex}, vk32s); // an index is no floating number
        return walk({&lenght});
    }

    bool makeData() override {
        return pSrcLsp.createVector(m_grid.room(lenght), setRand, 0, 1) &&
               pSrcDstPrevFreq.createVector(40, setRand, 0, 1) &&
               pDstQLsf.createVector(m_grid.room(lenght), setZero, 0, 0) &&
               pDstQLsp.createVector(m_grid.room(lenght), setZero, 0, 0) &&
               pDstQLspIndex.createVector(2, setZero, 0, 0);
    }

    double getDivisor() override { return lenght.value() * 4.0; }
};

} // namespace

VK_REG(TimingLSPQnt, veksLSPQuant_G729E_32f,
       veksLSPQuant_G729E_32f(pSrcLsp.m_32f, pSrcDstPrevFreq.m_32f, pDstQLsf.m_32f, pDstQLsp.m_32f,
                              pDstQLspIndex.m_32s))
