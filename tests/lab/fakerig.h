// A program in place of the rig: a shell script that writes what a test wants, and then ends as it wants.
#pragma once

#include "subject.h"
#include "tempdir.h"

#include <filesystem>
#include <string>

namespace krlab {

/// The head of a run in a table.
inline const std::string tableHead = "CPU,Processor of a test, 2x2.5 GHz, \nOS,Linux (1, x86_64)\nComputer,box\n"
                                     "Library,libveksc, 1.0.0, Nov 22 2026\nStart,Sun Nov 22 02:25:47 2026\n";
inline const std::string tableHeading = "funcBase,funcDataType,funcDescriptor,Len/Size,Parm1,Parm2,Parm3,Parm4,"
                                        "scaleFactor,Comment,Clocks,per,Time (usec),MFlops\n";

/// The console text of one test with one line of 400 clocks in 16 loops.
inline std::string consoleTest(const std::string& function, bool ended = true) {
    std::string text = "| Function  : " + function +
                       "                     Sun Nov 22 02:25:49 2026|\n"
                       "| Test      : TimX |\n| Source    : p_x |\n len = 8\n   Test has been registered.\nlen=8 \n"
                       "    Auto method: start\n    Iteration Measurement: \n        stopLoops  = 16\n"
                       "        stopClocks = 401\n        funcClocks = 25.1\n    Auto method: stop\n"
                       "  acc=0.5%   nLps=16     perf=     25.1/        8=     3.14 clocks\n";
    if (ended) {
        text += "| -OK         " + function + "     Sun Nov 22 02:25:49 2026|\n";
    }
    return text;
}

inline const std::string consoleEnd = "| KR Summary        |\n| .Number of tests : 1 |\n";

inline std::string shellQuoted(const std::string& text) {
    std::string out = "'";
    for (const char c : text) {
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return out + "'";
}

inline std::string fakeRow(const std::string& function) {
    return function + ",-,-,8,-,-,-,-,-,nLps=16,3.14,e,0.01,-\n";
}

/// One test of the script: its row, then its console text; what it does then, and `fi`, are added by the caller.
inline std::string scriptTest(const std::string& function, bool ended = true) {
    return "case \" $keys \" in *\" -f=\"*) case \" $keys \" in *\" -f=" + function +
           " \"*) wanted=1 ;; *) wanted= ;; esac ;; " + "*) wanted=1 ;; esac\nif [ -n \"$wanted\" ]; then printf %s " +
           shellQuoted(fakeRow(function)) + " >>$table; printf %s " + shellQuoted(consoleTest(function, ended)) + "; ";
}

inline const std::string scriptHead = "printf %s " + shellQuoted(tableHead + tableHeading) + " >>$table\n";
inline const std::string scriptEnd = "printf %s " + shellQuoted(consoleEnd) + "\n";

/// The script finds in $table where the table belongs and in $keys its arguments. It answers -e with the tests f1, f2
/// and so on.
class FakeRig {
public:
    explicit FakeRig(const std::string& script, int tests = 3) {
        std::string list;
        for (int i = 1; i <= tests; ++i) {
            list += "   " + std::to_string(i) + "\\tf" + std::to_string(i) + "\\tTimX\\tp_x\\t\\n";
        }
        m_directory.write("rig.sh", R"(#!/bin/bash
keys="$*"
for word in "$@"; do case $word in -r*) table=${word#-r} ;; -i*) ini=${word#-i} ;; esac; done
case " $keys " in *" -e "*)
    printf '   #\tFunction\tTest\tSource\t\n)" +
                                        list + R"('
    exit 0 ;;
esac
)" + script);
        std::filesystem::permissions(m_directory.path("rig.sh"), std::filesystem::perms::owner_all);
    }
    Subject subject() const { return {"fake", m_directory.path("rig.sh"), {}}; }
    std::string file(const std::string& name) const { return m_directory.path(name); }
    void write(const std::string& name, const std::string& text) const { m_directory.write(name, text); }

private:
    TempDir m_directory;
};

} // namespace krlab
