// Adaptive codebook of G.729.1: closed-loop search and gain.
#include "vkc.h"

namespace {

vkVector pSrcDelay, pSrcDstPrevExcitation, pSrcAdptTarget, pSrcImpulseResponse, pSrcAdptVector, pDstFltAdptVector,
    pSrcPrevExcitation, pDstDelay;
krStepIterator<int> len, lag, frac, subFrame;
Vek16s pResultAdptGain, lagMin, lagMax;

// Past and frame of the excitation; the search reads past and one subframe of it.
constexpr int excitation = 234;
constexpr int lagSpan = 6;

class Tim7291pitch : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "len");
        vkcFix(lag, 20);
        vkcFix(frac, 0);
        vkcFix(subFrame, 0);
        if (m_decode) {
            len.setList({excitation});
            vkcRebuild(lag, "lag").set(20, 143, 40, '+');
            vkcRebuild(frac, "subFrame").set(-1, 1, 1, '+');
        } else {
            len.setList({40});
            vkcRebuild(subFrame, "subFrame").set(0, 80, 40, '+');
            if (m_search) {
                vkcRebuild(lag, "lag").set(20, 100, 40, '+');
            }
        }
        initVectors({&pSrcDelay, &pSrcDstPrevExcitation, &pSrcAdptTarget, &pSrcImpulseResponse, &pSrcAdptVector,
                     &pDstFltAdptVector, &pSrcPrevExcitation, &pDstDelay},
                    vkArg::src);
        return walk({&len, &lag, &frac, &subFrame});
    }

    bool makeData() override {
        if (!vkcCounts(subFrame, excitation - 40 + 1) || !pSrcDelay.createVector(2, setZero, 0, 0) ||
            !pSrcDstPrevExcitation.createVector(m_grid.room(len), setRand, -2048, 2048) ||
            !pSrcAdptTarget.createVector(m_grid.room(len), setRand, -2048, 2048) ||
            !pSrcImpulseResponse.createVector(m_grid.room(len), setRand, -2048, 2048) ||
            !pSrcAdptVector.createVector(excitation, setRand, -2048, 2048) ||
            !pDstFltAdptVector.createVector(m_grid.room(len), setZero, 0, 0) ||
            !pSrcPrevExcitation.createVector(excitation, setRand, -2048, 2048) ||
            !pDstDelay.createVector(2, setZero, 0, 0)) {
            return false;
        }
        SetData_Delay(lag.value(), frac.value(), pSrcDelay.m_16s);
        lagMin = static_cast<Vek16s>(lag.value());
        lagMax = static_cast<Vek16s>(vkcSize(lag) + lagSpan);
        return true;
    }

    double getDivisor() override { return len.value(); }

    void parmsToOstrm() override {
        for (const krParameter* parm : shown()) {
            parm->toOStream(g_ostrm);
        }
    }

    void parmsToCstrm() override {
        for (const krParameter* parm : shown()) {
            parm->toCStream(g_cstrm);
        }
    }

    void parmsNameToCstrm() override {
        for (const krParameter* parm : shown()) {
            parm->nameToCStream(g_cstrm);
        }
    }

    void SetData_Delay(int delay, int fraction, short* pDelay) {
        pDelay[0] = static_cast<short>(delay);
        pDelay[1] = static_cast<short>(fraction);
    }

private:
    // The fraction walks along but does not show.
    krList<krParameter*> shown() const {
        krList<krParameter*> parms;
        parms.append(&len);
        if (m_search || m_decode) {
            parms.append(&lag);
        }
        if (!m_decode) {
            parms.append(&subFrame);
        }
        return parms;
    }

    const bool m_decode = m_func.contains("veksAdaptiveCodebookDecode_G7291_16s_I");
    const bool m_search = m_func.contains("veksAdaptiveCodebookSearch_G7291_16s");
};

} // namespace

VK_REG(Tim7291pitch, veksAdaptiveCodebookGain_G7291_16s,
       veksAdaptiveCodebookGain_G7291_16s(pSrcAdptTarget.m_16s, pSrcImpulseResponse.m_16s,
                                          pSrcAdptVector.m_16s + subFrame.value(), pDstFltAdptVector.m_16s,
                                          &pResultAdptGain))
VK_REG(Tim7291pitch, veksAdaptiveCodebookSearch_G7291_16s,
       veksAdaptiveCodebookSearch_G7291_16s(pSrcAdptTarget.m_16s, pSrcImpulseResponse.m_16s, pSrcPrevExcitation.m_16s,
                                            pDstDelay.m_16s, lagMin, lagMax, static_cast<Vek16s>(subFrame.value())))
