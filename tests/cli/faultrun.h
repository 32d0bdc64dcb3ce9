// What runs of the fault program share: keys that measure quickly, and what its tables hold.
#pragma once

#include <string>
#include <vector>

/// Two loops a line, and nothing else asked or sorted.
inline std::vector<std::string> quickKeys(const std::vector<std::string>& more) {
    std::vector<std::string> keys = {"-B", "-s-", "-dMethod=Manual", "-dNumLoops=2"};
    keys.insert(keys.end(), more.begin(), more.end());
    return keys;
}

/// A table's head and the titles of its columns.
inline const std::string faultTableHead = "CPU,<text>\n"
                                          "OS,<text>\n"
                                          "Computer,<text>\n"
                                          "Start,Day Mon dd hh:mm:ss yyyy\n";
inline const std::string faultTableTitle =
    "function,Parm1,Parm2,Parm3,Parm4,Parm5,Parm6,Parm7,Parm8,Comment,Clocks,per,Time (usec),MFlops\n";

/// The row of a line with a size.
inline std::string sized(const char* name, const char* size) {
    return std::string(name) + "," + size + ",-,-,-,-,-,-,-,nLps=2,<clocks>,el,<usec>,<mflops>\n";
}

/// The rows of a test that walks the sizes of the fault program's grid.
inline std::string grid(const char* name) {
    return sized(name, "8") + sized(name, "16") + sized(name, "32");
}
