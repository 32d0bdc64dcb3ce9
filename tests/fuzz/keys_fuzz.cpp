// Fuzz target of the key splitter: a line of keys, as a .cfg file holds it.
#include "fuzz_input.h"

#include "krcmdline.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string line = fuzzText(data, size);
    krCommandList keys;
    keys.setArgs(line.c_str());
    for (const krCommandKey& key : keys) {
        krString argument;
        fuzzExpect(keys.isKey(key.key));
        fuzzExpect(keys.getArg(key.key, argument));
        fuzzExpect(key.arg.length() <= static_cast<int>(line.size()));
    }
    return 0;
}
