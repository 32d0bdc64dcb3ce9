// Fuzz target of the ini grammar: a file is read, rewritten, and rewritten again without a further change.
#include "fuzz_input.h"

#include "krinifile.h"

#include <cstdio>
#include <unistd.h>

static std::string slurp(const std::string& name) {
    std::string text;
    FILE* file = std::fopen(name.c_str(), "rb");
    fuzzExpect(file != nullptr);
    char buffer[4096];
    for (size_t n = 0; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;) {
        text.append(buffer, n);
    }
    std::fclose(file);
    return text;
}

static void rewrite(const std::string& name) {
    krIniFile file;
    fuzzExpect(file.open(name.c_str(), true));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string name = "/tmp/fuzz_inifile_" + std::to_string(getpid()) + ".ini";
    FILE* file = std::fopen(name.c_str(), "wb");
    fuzzExpect(file != nullptr);
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    rewrite(name);
    const std::string once = slurp(name);
    rewrite(name);
    fuzzExpect(once == slurp(name));
    std::remove(name.c_str());
    return 0;
}
