// Scaling of a vector to its largest magnitude.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pDst;
vkVector pSrcDst;
vkVector pTmp;
krStepIterator<int> lenght_I;
krStepIterator<int> lenght;
vkcGrid grid;
int dataSize;
int scale;
const int scaleFactor = 3;

class TimAutoScale : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return m_inPlace ? lenght_I.value() : lenght.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }

private:
    bool m_inPlace = false;
};

bool TimAutoScale::canStart() {
    m_inPlace = m_func.contains("_I");
    vkcRebuild(lenght_I, "lenght").setList({60, 80, 385});
    vkcRebuild(lenght, "lenght").set(40, 80, 20, '+');
    if (m_inPlace) {
        grid.begin({&lenght_I});
    } else {
        grid.begin({&lenght});
    }
    for (vkVector* vector : {&pSrc, &pDst, &pSrcDst, &pTmp}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimAutoScale::makeData() {
    if (m_inPlace) {
        const bool made = pSrcDst.createVector(lenght_I.value(), setZero, 0, 0) &&
                          pTmp.createVector(lenght_I.value(), setValue, 10, 0);
        dataSize = pTmp.size();
        return made;
    }
    return pSrc.createVector(lenght.value(), setValue, 10, 0) && pDst.createVector(lenght.value(), setZero, 0, 0);
}

void TimAutoScale::flushData() {
    pDst.deleteVector();
    pSrc.deleteVector();
    pTmp.deleteVector();
    pSrcDst.deleteVector();
}

} // namespace

VK_REG_I(TimAutoScale, veksAutoScale_16s_I, veksAutoScale_16s_I(pSrcDst.m_16s, lenght_I.value(), &scale),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize);
         scale = scaleFactor)
VK_REG_I(TimAutoScale, veksAutoScale_16s, veksAutoScale_16s(pSrc.m_16s, pDst.m_16s, lenght.value(), &scale),
         scale = scaleFactor)
