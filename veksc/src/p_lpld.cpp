// Levinson-Durbin recursion.
#include "vkc.h"

namespace {

vkVector pSrc, pLPC, pRC;
krStepIterator<int> order;
Vek16s err_;
Vek32f errFloat_;

class TimLPCLevinsonDurbin : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        const bool annexB = m_func.contains("729B");
        vkcRebuild(order, "Order");
        if (annexB) {
            order.setList({10});
            // The name has no type word.
            initVectors({&pSrc}, vk32s);
            initVectors({&pLPC, &pRC}, vk16s);
        } else {
            order.set(10, 30, 5, '+');
            initVectors({&pSrc}, vkArg::src);
            initVectors({&pLPC, &pRC}, vkArg::dst);
        }
        return walk({&order});
    }

    bool makeData() override {
        // Lag 0 and the leading coefficient come on top of the order.
        const long long size = m_grid.room(order) + 1;
        const bool source =
            m_float ? pSrc.createVector(size, setOne, 0, 0) : pSrc.createVector(size, setValue, 1073741824, 0);
        if (!source || !pLPC.createVector(size, setZero, 0, 0) || !pRC.createVector(size, setZero, 0, 0)) {
            return false;
        }
        if (m_float) {
            setData_32f();
        }
        return true;
    }

    double getDivisor() override { return static_cast<double>(order.value()) * order.value(); }
    virtual void setData_32f() { pSrc.setIndex(0, setValue, 2, 0); }

private:
    const bool m_float = m_func.contains("32f");
};

} // namespace

VK_REG(TimLPCLevinsonDurbin, veksLevinsonDurbin_G729_32f,
       veksLevinsonDurbin_G729_32f(pSrc.m_32f, order.value(), pLPC.m_32f, pRC.m_32f, &errFloat_))
VK_REG(TimLPCLevinsonDurbin, veksLevinsonDurbin_G729_32s16s,
       veksLevinsonDurbin_G729_32s16s(pSrc.m_32s, order.value(), pLPC.m_16s, pRC.m_16s, &err_))
VK_REG(TimLPCLevinsonDurbin, veksLevinsonDurbin_G729B,
       veksLevinsonDurbin_G729B(pSrc.m_32s, pLPC.m_16s, pRC.m_16s, &err_))
