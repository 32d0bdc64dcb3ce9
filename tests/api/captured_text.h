// What goes to the console stream while an object of this lives, in a string instead.
#pragma once

#include "krio.h"

#include <cstdio>
#include <cstdlib>
#include <string>

/// Takes the destinations of g_ostrm away, at a given output level, and puts everything back at the end.
class CapturedText {
public:
    explicit CapturedText(OutputLevel level = ERR | WARN | PERF) : m_oldLevel(g_ostrm.outLevel()) {
        m_stream.m_file = open_memstream(&m_buffer, &m_size);
        g_ostrm.krList<o_stream*>::swap(m_destinations);
        g_ostrm.append(&m_stream);
        g_ostrm.setOutLevel(level);
    }
    CapturedText(const CapturedText&) = delete;
    CapturedText& operator=(const CapturedText&) = delete;
    ~CapturedText() {
        g_ostrm.krList<o_stream*>::swap(m_destinations);
        g_ostrm.setOutLevel(m_oldLevel);
        m_stream.close();
        std::free(m_buffer);
    }
    std::string text() {
        std::fflush(m_stream.m_file);
        return std::string(m_buffer, m_size);
    }

private:
    char* m_buffer = nullptr;
    size_t m_size = 0;
    o_stream m_stream{nullptr};
    krList<o_stream*> m_destinations;
    OutputLevel m_oldLevel;
};
