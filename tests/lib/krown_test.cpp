// Functions of one's own beside tests of library functions.
#include "krown.h"

#include "vkreg.h"

#include "krstream.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

std::string cellsOf(krTest& test) {
    char* text = nullptr;
    size_t size = 0;
    o_stream stream(open_memstream(&text, &size));
    krList<o_stream*> taken;
    g_cstrm.swap(taken);
    g_cstrm.append(&stream);
    test.funcToCstrm();
    g_cstrm.lineOut(3);
    std::fflush(stream.m_file);
    std::string row(text, size);
    g_cstrm.swap(taken);
    stream.close();
    std::free(text);
    return row;
}

int nothing() {
    return 0;
}

} // namespace

TEST(KrOwnNames, AreSplitByTheLibrarysGrammarWhereItsLayerIsLinked) {
    krOwnTest own("veksFoo_G729_16s32s_Sfs", kr::detail::Code());
    EXPECT_EQ("veksFoo_G729,16s32s,Sfs\n", cellsOf(own));
    vkTest known(nothing, nullptr, nullptr, nullptr, "veksFoo_G729_16s32s_Sfs", "p_foo", "TimFoo//VK_REG");
    EXPECT_EQ(cellsOf(known), cellsOf(own));
    krOwnTest plain("myGain", kr::detail::Code());
    EXPECT_EQ("myGain,-,-\n", cellsOf(plain));
}
