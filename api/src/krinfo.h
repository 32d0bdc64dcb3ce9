// What the harness knows of the machine and the day without asking the processor: the computer's name, the operating
// system, the calendar.
#pragma once

#include "krstring.h"

#include <ctime>

/// Name of the computer.
class krHost {
public:
    krHost();
    krString text() const { return m_name; }

private:
    char m_name[1024] = {};
};

/// The operating system: name, release and machine as "name (release, machine)".
class krOS {
public:
    krOS();
    const krString& text() const { return m_text; }

private:
    krString m_text;
};

extern krHost g_host;
extern krOS g_os;

/// The reader of calendar time. Every start, end and duration of the reports comes through it.
extern time_t (*krTime)();
/// The text of `ctime`, with its newline; empty for a time beyond the calendar.
krString krTimeText(time_t when);
