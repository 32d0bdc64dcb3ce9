// Fuzz target of the grammar of function names: every reading of a name, and the order of two names.
#include "fuzz_input.h"

#include "vkfunc.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = fuzzText(data, size);
    const size_t cut = text.find('\n');
    const vkFunc one(text.substr(0, cut).c_str());
    const vkFunc two(cut == std::string::npos ? "veksDotProd_16s32s_Sfs" : text.substr(cut + 1).c_str());
    krString parts[5];
    one.parseFunction(parts[0], parts[1], parts[4]);
    one.parseFunction(parts[0], parts[1], parts[2], parts[3], parts[4]);
    fuzzExpect(one.prefix().length() + one.baseName().length() <= one.length());
    vkType types[4];
    one.getTypes(types[0], types[1], types[2], types[3]);
    for (const vkType type : types) {
        vkFunc::typeToString(type);
    }
    for (int i = 0; i < 4; ++i) {
        one.type(i);
    }
    one.coi();
    int channels[2];
    one.getChannels(channels[0], channels[1]);
    const int order = one.compare(two);
    fuzzExpect((order < 0) == (two.compare(one) > 0));
    fuzzExpect(one.compare(one) == 0);
    return 0;
}
