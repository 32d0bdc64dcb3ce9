// Quantiser of the line spectral frequencies of G.729 and Annex B.
#include "vkc.h"

namespace {

vkVector quantIndex, pLSP, pQuantLSFTable, pQuantLSF;
krStepIterator<int> lenght, lenght_table;

constexpr int maIndex = 0;
constexpr int freqCount = 10;
const Vek16s freq_prev_reset[freqCount] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
const Vek16s speechLsf[freqCount] = {2963, 4560, 6471, 8523, 11936, 14431, 16601, 18394, 20338, 22179};

class TimLspqnt : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({10});
        vkcRebuild(lenght_table, "lenght LSFTable").setList({40});
        initVectors({&quantIndex, &pLSP, &pQuantLSFTable, &pQuantLSF}, vkArg::src);
        return walk({&lenght, &lenght_table});
    }

    bool makeData() override {
        if (!quantIndex.createVector(m_grid.room(lenght), setZero, 0, 0) ||
            !pLSP.createVector(m_grid.room(lenght), setZero, 0, 0) ||
            !pQuantLSFTable.createVector(m_grid.room(lenght_table), setZero, 0, 0) ||
            !pQuantLSF.createVector(m_grid.room(lenght), setZero, 0, 0)) {
            return false;
        }
        setDataL();
        return setData();
    }

    double getDivisor() override { return lenght.value(); }

    virtual bool setData() {
        for (int row = 0; row + freqCount <= lenght_table.value(); row += freqCount) {
            if (!vkcDone(veksCopy_16s(freq_prev_reset, pQuantLSFTable.m_16s + row, freqCount))) {
                return false;
            }
        }
        return true;
    }

    virtual void setDataL() {
        for (int i = 0; i < freqCount && i < lenght.value(); ++i) {
            pLSP.setIndex(i, setValue, speechLsf[i], 0);
        }
    }
};

} // namespace

VK_REG(TimLspqnt, veksLSFDecodeErased_G729_16s,
       veksLSFDecodeErased_G729_16s(maIndex, pQuantLSFTable.m_16s, pQuantLSF.m_16s))
VK_REG(TimLspqnt, veksLSFDecode_G729B_16s,
       veksLSFDecode_G729B_16s(quantIndex.m_16s, pQuantLSFTable.m_16s, pQuantLSF.m_16s))
VK_REG(TimLspqnt, veksLSFDecode_G729_16s,
       veksLSFDecode_G729_16s(quantIndex.m_16s, pQuantLSFTable.m_16s, pQuantLSF.m_16s))
VK_REG(TimLspqnt, veksLSFQuant_G729B_16s,
       veksLSFQuant_G729B_16s(pLSP.m_16s, pQuantLSFTable.m_16s, pQuantLSF.m_16s, quantIndex.m_16s))
VK_REG(TimLspqnt, veksLSFQuant_G729_16s,
       veksLSFQuant_G729_16s(pLSP.m_16s, pQuantLSFTable.m_16s, pQuantLSF.m_16s, quantIndex.m_16s))
