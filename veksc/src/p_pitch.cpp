// Open-loop pitch search of G.729 and the maximum of a correlation.
#include "vkc.h"

namespace {

vkVector pSrc;
krStepIterator<int> lenght, maxLag_pithch, lowerLag, upperLag, subFrame;
Vek16s bestLag;
Vek32s max_src;
int maxLag;

class TimACorrLagMax : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght");
        vkcRebuild(maxLag_pithch, "maxLag").setList({1});
        vkcRebuild(lowerLag, "lowerLag").setList({1});
        vkcRebuild(upperLag, "upperLag").setList({1});
        vkcRebuild(subFrame, "").setList({1});
        if (m_func.contains("OpenLoopPitchSearch_G729")) {
            lenght.setList({160});
            maxLag_pithch.setList({143});
        } else if (m_lagMax) {
            lenght.set(40, 80, 10, '+');
            lowerLag.setList({20});
            upperLag.setList({40});
        } else {
            lenght.setList({80});
        }
        initVectors({&pSrc}, vkArg::src);
        return walk({&lenght, &maxLag_pithch, &lowerLag, &upperLag, &subFrame});
    }

    bool makeData() override {
        // The calls read up to the longest delay before or after the samples.
        return maxLag_pithch.value() > 0 && maxLag_pithch.value() == m_grid.room(maxLag_pithch) &&
               pSrc.createVector(m_grid.room(maxLag_pithch) + m_grid.room(upperLag) + m_grid.room(lenght), setValue, 2,
                                 0);
    }

    double getDivisor() override {
        return lenght.value() * (m_lagMax ? static_cast<double>(upperLag.value()) - lowerLag.value() + 1 : 1);
    }

private:
    const bool m_lagMax = m_func.contains("veksAutoCorrLagMax");
};

} // namespace

VK_REG(TimACorrLagMax, veksOpenLoopPitchSearch_G729_16s,
       veksOpenLoopPitchSearch_G729_16s(pSrc.m_16s + maxLag_pithch.value(), &bestLag))
VK_REG(TimACorrLagMax, veksOpenLoopPitchSearch_G729A_16s,
       veksOpenLoopPitchSearch_G729A_16s(pSrc.m_16s + maxLag_pithch.value(), &bestLag))
VK_REG(TimACorrLagMax, veksAutoCorrLagMax_Fwd_16s,
       veksAutoCorrLagMax_Fwd_16s(pSrc.m_16s, lenght.value(), lowerLag.value(), upperLag.value(), &max_src, &maxLag))
VK_REG(TimACorrLagMax, veksAutoCorrLagMax_Inv_16s,
       veksAutoCorrLagMax_Inv_16s(pSrc.m_16s + upperLag.value() + 1, lenght.value(), lowerLag.value(), upperLag.value(),
                                  &max_src, &maxLag))
