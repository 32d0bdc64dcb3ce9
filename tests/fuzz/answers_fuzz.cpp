// Fuzz target of the texts that parameters take: lists, steps, numbers and words.
#include "fuzz_input.h"

#include "krexcept.h"
#include "kriterator.h"

template <class Parameter>
static void take(Parameter& parm, const std::string& text) {
    try {
        parm.translate(text.c_str());
    } catch (const krException& fault) {
        fuzzExpect(fault.msg()[0] != '\0');
        return;
    }
    fuzzExpect(parm.description().length() >= parm.name().length());
    bool more = parm.firstValue();
    for (int i = 0; more && i < 1000; ++i) {
        parm.valueString();
        more = parm.nextValue();
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = fuzzText(data, size);
    krIterator<int> list("List");
    krStepIterator<int> step("Step");
    krStepIterator<short> shorts("Shorts");
    krStepIterator<unsigned> unsigneds("Unsigneds");
    krDefault<int> number(3, "Number");
    krMapDefault<bool> map(true, "Map");
    map[true] = "yes";
    map[false] = "no";
    DefaultAlign align(0, "Align");
    DefaultShift shift(512, "Shift");
    take(list, text);
    take(step, text);
    take(shorts, text);
    take(unsigneds, text);
    take(number, text);
    take(map, text);
    take(align, text);
    take(shift, text);
    fuzzExpect(align.value() > -64 && align.value() < 64 && shift.value() % 64 == 0);
    return 0;
}
