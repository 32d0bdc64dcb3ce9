// Search of the four pulses of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrcMatrix, pDstFixedVector, pSrcFixedCorr, pSearchTimes;
krStepIterator<int> lenght;
Vek16s pDstFixedSign, pDstFixedPosition, pResultGrid;

constexpr int matrixSize = 416;

class TimFixCdb : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({64});
        // The first type is that of the matrix.
        initVectors({&pSrcMatrix}, vkArg::src);
        initVectors({&pDstFixedVector, &pSrcFixedCorr, &pSearchTimes}, vk16s);
        return walk({&lenght});
    }

    bool makeData() override {
        return pSrcMatrix.createVector(matrixSize, setRand, 0, 4096) &&
               pDstFixedVector.createVector(60, setZero, 0, 0) &&
               pSrcFixedCorr.createVector(m_grid.room(lenght), setZero, 0, 0) &&
               pSearchTimes.createVector(1, setRand, 0, 128);
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimFixCdb, veksACELPFixedCodebookSearch_G723_16s,
       veksACELPFixedCodebookSearch_G723_16s(pSrcFixedCorr.m_16s, pSrcMatrix.m_16s, &pDstFixedSign, &pDstFixedPosition,
                                             &pResultGrid, pDstFixedVector.m_16s, pSearchTimes.m_16s))
VK_REG(TimFixCdb, veksACELPFixedCodebookSearch_G723_32s16s,
       veksACELPFixedCodebookSearch_G723_32s16s(pSrcFixedCorr.m_16s, pSrcMatrix.m_32s, &pDstFixedSign,
                                                &pDstFixedPosition, &pResultGrid, pDstFixedVector.m_16s,
                                                pSearchTimes.m_16s))
