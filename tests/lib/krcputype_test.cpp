// The harness's table of processor types against the library's published list.
#include "krlib.h"
#include "vekdefs.h"

#include <gtest/gtest.h>

namespace {

struct PublishedRow {
    int code;
    const char* label;
    const char* name;
};
const PublishedRow s_published[] = {
#define PUBLISHED_ROW(code, label, name, need) {code, #label, name},
    VEK_CPU_TYPES(PUBLISHED_ROW)
#undef PUBLISHED_ROW
};

TEST(KrCpuTypeTable, RowsAreThoseOfTheLibrary) {
    ASSERT_EQ(krCpuType::count(), static_cast<int>(std::size(s_published)));
    int index = 0;
    for (const PublishedRow& published : s_published) {
        int code = -1;
        krString label;
        krString name;
        krCpuType::row(index++, code, label, name);
        EXPECT_EQ(code, published.code);
        EXPECT_STREQ(label.c_str(), published.label);
        EXPECT_STREQ(name.c_str(), published.name);
    }
}

} // namespace
