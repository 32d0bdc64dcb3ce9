// Search of the four pulses of G.729 and its Annex A.
#include "vkc.h"

namespace {

vkVector pSrc1, pTmp, pSrcDst, pDst, ind;
krStepIterator<int> lenght, lenght_srcdst, subFrame;
Vek16s pSearchTimes;
int dataSize;

constexpr int matrixSize = 616;

class TimCdbk : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({40});
        vkcRebuild(lenght_srcdst, "lenght_srcdst").setList({matrixSize});
        // The depth-first search does not know of subframes.
        vkcSwitch(subFrame, "subFrame", !m_func.contains("G729A"));
        const vkType element = m_func.contains("_32f") ? vk32f : vk16s;
        const vkType matrix = m_func.contains("_32s16s") ? vk32s : element;
        initVectors({&pSrc1}, element);
        initVectors({&pTmp, &pSrcDst}, matrix);
        initVectors({&pDst}, element);
        initVectors({&ind}, vk16s);
        return walk({&lenght, &lenght_srcdst, &subFrame});
    }

    bool makeData() override {
        if (!pSrc1.createVector(m_grid.room(lenght), setRand, 0, 4096) ||
            !pTmp.createVector(m_grid.room(lenght_srcdst), setRand, 0, 4096) ||
            !pSrcDst.createVector(m_grid.room(lenght_srcdst), setZero, 0, 0) ||
            !pDst.createVector(m_grid.room(lenght), setZero, 0, 0) || !ind.createVector(2, setZero, 0, 0)) {
            return false;
        }
        dataSize = pTmp.size();
        pSearchTimes = 0;
        return setData();
    }

    double getDivisor() override { return lenght.value(); }

    virtual bool setData() {
        if (m_func.contains("_32f")) {
            return vkcDone(veksToeplizMatrix_G729_32f(pSrc1.m_32f, pTmp.m_32f));
        }
        if (m_func.contains("_32s16s")) {
            return vkcDone(veksToeplizMatrix_G729_16s32s(pSrc1.m_16s, pTmp.m_32s));
        }
        // The narrow matrix is the upper half of the wide one.
        Vek32s wide[matrixSize];
        if (!vkcDone(veksToeplizMatrix_G729_16s32s(pSrc1.m_16s, wide))) {
            return false;
        }
        for (int i = 0; i < matrixSize; ++i) {
            pTmp.m_16s[i] = static_cast<Vek16s>(wide[i] >> 16);
        }
        return true;
    }
};

} // namespace

VK_REG_I(TimCdbk, veksFixedCodebookSearch_G729_32f,
         veksFixedCodebookSearch_G729_32f(pSrc1.m_32f, pSrcDst.m_32f, pDst.m_32f, ind.m_16s, &pSearchTimes,
                                          static_cast<Vek16s>(subFrame.value())),
         vkcRestore(pSrcDst.m_32f, pTmp.m_32f, dataSize))
VK_REG_I(TimCdbk, veksFixedCodebookSearch_G729A_32f,
         veksFixedCodebookSearch_G729A_32f(pSrc1.m_32f, pSrcDst.m_32f, pDst.m_32f, ind.m_16s),
         vkcRestore(pSrcDst.m_32f, pTmp.m_32f, dataSize))
VK_REG_I(TimCdbk, veksFixedCodebookSearch_G729A_16s,
         veksFixedCodebookSearch_G729A_16s(pSrc1.m_16s, pSrcDst.m_16s, pDst.m_16s, ind.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG_I(TimCdbk, veksFixedCodebookSearch_G729_16s,
         veksFixedCodebookSearch_G729_16s(pSrc1.m_16s, pSrcDst.m_16s, pDst.m_16s, ind.m_16s, &pSearchTimes,
                                          static_cast<Vek16s>(subFrame.value())),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG_I(TimCdbk, veksFixedCodebookSearch_G729A_32s16s,
         veksFixedCodebookSearch_G729A_32s16s(pSrc1.m_16s, pSrcDst.m_32s, pDst.m_16s, ind.m_16s),
         vkcRestore(pSrcDst.m_32s, pTmp.m_32s, dataSize))
VK_REG_I(TimCdbk, veksFixedCodebookSearch_G729_32s16s,
         veksFixedCodebookSearch_G729_32s16s(pSrc1.m_16s, pSrcDst.m_32s, pDst.m_16s, ind.m_16s, &pSearchTimes,
                                             static_cast<Vek16s>(subFrame.value())),
         vkcRestore(pSrcDst.m_32s, pTmp.m_32s, dataSize))
