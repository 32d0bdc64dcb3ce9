// Fuzz target of the word splitter and of the -d pairs: separators before a newline, the text after it.
#include "fuzz_input.h"

#include "krdata.h"
#include "krstring.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string all = fuzzText(data, size);
    const size_t cut = all.find('\n');
    const std::string separators = cut == std::string::npos ? " =" : all.substr(0, cut);
    const std::string text = cut == std::string::npos ? all : all.substr(cut + 1);
    krStringList words;
    const int count = krString(text.c_str()).parse(words, separators.c_str());
    fuzzExpect(count == words.size());
    int sum = 0;
    for (const krString& word : words) {
        sum += word.length();
    }
    fuzzExpect(sum <= static_cast<int>(text.size()));
    krString a;
    krString b;
    krString c;
    krString(text.c_str()).parse(a, b, separators.c_str());
    krString(text.c_str()).parse(a, b, c, separators.c_str());
    krDataList pairs;
    pairs.set(text.c_str());
    fuzzExpect(pairs.size() <= 1);
    return 0;
}
