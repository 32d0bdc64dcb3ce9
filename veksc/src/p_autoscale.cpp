// Scaling of a vector to its largest magnitude.
#include "vkc.h"

namespace {

vkVector pSrc, pDst, pSrcDst, pTmp;
krStepIterator<int> lenght_I, lenght;
int dataSize, scale;
const int scaleFactor = 3;

class TimAutoScale : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght_I, "lenght").setList({60, 80, 385});
        vkcRebuild(lenght, "lenght").set(40, 80, 20, '+');
        initVectors({&pSrc, &pDst, &pSrcDst, &pTmp}, vkArg::src);
        return m_inPlace ? walk({&lenght_I}) : walk({&lenght});
    }

    bool makeData() override {
        if (m_inPlace) {
            const bool made = pSrcDst.createVector(lenght_I.value(), setZero, 0, 0) &&
                              pTmp.createVector(lenght_I.value(), setValue, 10, 0);
            dataSize = pTmp.size();
            return made;
        }
        return pSrc.createVector(lenght.value(), setValue, 10, 0) && pDst.createVector(lenght.value(), setZero, 0, 0);
    }

    double getDivisor() override { return m_inPlace ? lenght_I.value() : lenght.value(); }

private:
    const bool m_inPlace = m_func.contains("_I");
};

} // namespace

VK_REG_I(TimAutoScale, veksAutoScale_16s_I, veksAutoScale_16s_I(pSrcDst.m_16s, lenght_I.value(), &scale),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize);
         scale = scaleFactor)
VK_REG_I(TimAutoScale, veksAutoScale_16s, veksAutoScale_16s(pSrc.m_16s, pDst.m_16s, lenght.value(), &scale),
         scale = scaleFactor)
