// What the tests of streams and reports share: taking down what goes to the console, a table or c_out, typed answers,
// and a processor played by hand.
#pragma once

#include "krcpuid.h"
#include "krstream.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <utility>

/// A stream into memory.
class TextStream {
public:
    TextStream() : m_stream(open_memstream(&m_text, &m_size)) {}
    TextStream(const TextStream&) = delete;
    TextStream& operator=(const TextStream&) = delete;
    ~TextStream() {
        m_stream.close();
        std::free(m_text);
    }
    std::string text() {
        std::fflush(m_stream.m_file);
        return std::string(m_text, m_size);
    }
    o_stream* stream() { return &m_stream; }

private:
    char* m_text = nullptr;
    size_t m_size = 0;
    o_stream m_stream;
};

/// Takes the console text in place of its destinations while it lives.
class ConsoleCapture {
public:
    explicit ConsoleCapture(OutputLevel level = ERR | WARN | PERF) : m_level(g_ostrm.outLevel()) {
        g_ostrm.setOutLevel(level);
        g_ostrm.swap(m_saved);
        g_ostrm.insert(g_ostrm.end(), m_text.stream());
    }
    ConsoleCapture(const ConsoleCapture&) = delete;
    ConsoleCapture& operator=(const ConsoleCapture&) = delete;
    ~ConsoleCapture() {
        g_ostrm.swap(m_saved);
        g_ostrm.setOutLevel(m_level);
    }
    std::string text() { return m_text.text(); }

private:
    OutputLevel m_level;
    krList<o_stream*> m_saved;
    TextStream m_text;
};

/// Takes a table's lines.
class TableCapture {
public:
    explicit TableCapture(krCStream& table) : m_table(table) {
        m_table.swap(m_saved);
        m_table.insert(m_table.end(), m_text.stream());
    }
    TableCapture(const TableCapture&) = delete;
    TableCapture& operator=(const TableCapture&) = delete;
    ~TableCapture() { m_table.swap(m_saved); }
    std::string text() { return m_text.text(); }

private:
    krCStream& m_table;
    krList<o_stream*> m_saved;
    TextStream m_text;
};

/// Plays the person at the console: c_in gives `typed`, c_out is taken down.
class TypedAnswers {
public:
    explicit TypedAnswers(const std::string& typed) : m_typed(typed), m_in(c_in.m_file), m_out(c_out.m_file) {
        c_in.m_file = m_typed.empty() ? std::fopen("/dev/null", "r") : fmemopen(m_typed.data(), m_typed.size(), "r");
        c_out.m_file = m_text.stream()->m_file;
    }
    TypedAnswers(const TypedAnswers&) = delete;
    TypedAnswers& operator=(const TypedAnswers&) = delete;
    ~TypedAnswers() {
        std::fclose(c_in.m_file);
        c_in.m_file = m_in;
        c_out.m_file = m_out;
    }
    std::string prompts() { return m_text.text(); }

private:
    std::string m_typed;
    FILE* m_in;
    FILE* m_out;
    TextStream m_text;
};

/// A processor by hand: leaves that are not set give zeros. `calls` counts the readings.
class PlayedCpu {
public:
    struct Regs {
        unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    };
    PlayedCpu() : m_saved(krCpuidReader) {
        krCpuidReader = read;
        s_leaves.clear();
        calls = 0;
    }
    PlayedCpu(const PlayedCpu&) = delete;
    PlayedCpu& operator=(const PlayedCpu&) = delete;
    ~PlayedCpu() { krCpuidReader = m_saved; }

    /// Leaf 0: the largest function and the vendor's twelve characters.
    void vendor(unsigned largest, const char* name = "GenuineOrvan") {
        Regs& regs = set(0, 0, {});
        regs.eax = largest;
        std::memcpy(&regs.ebx, name, 4);
        std::memcpy(&regs.edx, name + 4, 4);
        std::memcpy(&regs.ecx, name + 8, 4);
    }
    Regs& set(unsigned function, unsigned sub, Regs regs) { return s_leaves[{function, sub}] = regs; }
    /// A cache of function 4 with 64-byte lines and one partition.
    void cache(unsigned sub, unsigned type, unsigned level, unsigned ways, unsigned sets) {
        set(4, sub, {type | level << 5 | 1U << 8 | 3U << 14 | 1U << 26, (ways - 1) << 22 | 63, sets - 1, 2});
    }

    static int calls;

private:
    static void read(unsigned function, unsigned sub, unsigned regs[4]) {
        ++calls;
        const auto found = s_leaves.find({function, sub});
        const Regs leaf = found == s_leaves.end() ? Regs{} : found->second;
        regs[0] = leaf.eax;
        regs[1] = leaf.ebx;
        regs[2] = leaf.ecx;
        regs[3] = leaf.edx;
    }
    static inline std::map<std::pair<unsigned, unsigned>, Regs> s_leaves;
    void (*m_saved)(unsigned, unsigned, unsigned*);
};
inline int PlayedCpu::calls = 0;
