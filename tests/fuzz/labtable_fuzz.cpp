// Fuzz target of the companion's table reader: any bytes are a table or a fault with a message, and tidy forms of them.
#include "fuzz_input.h"

#include "fault.h"
#include "infotext.h"
#include "tidy.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    krlab::InfoParser parser;
    parser.feed(text);
    parser.finish();
    try {
        const std::vector<krlab::Table> tables = {krlab::parseTable("t.csv", text)};
        const std::vector<krlab::TidyRecord> records = krlab::tidyRecords(tables, {{}});
        fuzzExpect(records.size() == tables[0].rows());
        fuzzExpect(!krlab::tidyJson(records).empty());
        fuzzExpect(!krlab::tidyCsv(records).empty());
    } catch (const krlab::Fault& fault) {
        fuzzExpect(*fault.what() != 0);
    }
    return 0;
}
