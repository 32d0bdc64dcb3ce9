// Search of the four pulses of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrcMatrix;
vkVector pDstFixedVector;
vkVector pSrcFixedCorr;
vkVector pSearchTimes;
krStepIterator<int> lenght;
vkcGrid grid;
Vek16s pDstFixedSign;
Vek16s pDstFixedPosition;
Vek16s pResultGrid;

constexpr int matrixSize = 416;

class TimFixCdb : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return lenght.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimFixCdb::canStart() {
    vkcRebuild(lenght, "lenght").setList({64});
    grid.begin({&lenght});
    // The first type is that of the matrix.
    pSrcMatrix.init(m_func, vkArg::src);
    for (vkVector* vector : {&pDstFixedVector, &pSrcFixedCorr, &pSearchTimes}) {
        vector->init(vk16s);
    }
    return true;
}

bool TimFixCdb::makeData() {
    return pSrcMatrix.createVector(matrixSize, setRand, 0, 4096) && pDstFixedVector.createVector(60, setZero, 0, 0) &&
           pSrcFixedCorr.createVector(grid.room(lenght), setZero, 0, 0) &&
           pSearchTimes.createVector(1, setRand, 0, 128);
}

void TimFixCdb::flushData() {
    for (vkVector* vector : {&pSearchTimes, &pSrcFixedCorr, &pDstFixedVector, &pSrcMatrix}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimFixCdb, veksACELPFixedCodebookSearch_G723_16s,
       veksACELPFixedCodebookSearch_G723_16s(pSrcFixedCorr.m_16s, pSrcMatrix.m_16s, &pDstFixedSign, &pDstFixedPosition,
                                             &pResultGrid, pDstFixedVector.m_16s, pSearchTimes.m_16s))
VK_REG(TimFixCdb, veksACELPFixedCodebookSearch_G723_32s16s,
       veksACELPFixedCodebookSearch_G723_32s16s(pSrcFixedCorr.m_16s, pSrcMatrix.m_32s, &pDstFixedSign,
                                                &pDstFixedPosition, &pResultGrid, pDstFixedVector.m_16s,
                                                pSearchTimes.m_16s))
