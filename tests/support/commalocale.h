// A locale "comma" in which numbers have a comma, made on the spot.
#pragma once

#include "tempdir.h"

#include <cstdlib>

/// The locale can be set by its name, in this process and in those that it starts, while the object lives.
class CommaLocale {
public:
    CommaLocale() {
        m_directory.write("source",
                          "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n");
        const std::string command = "localedef -c -i " + m_directory.path("source") + " " + m_directory.path("comma") +
                                    " >" + m_directory.path("output") + " 2>&1";
        // Other categories are missing, which localedef takes for a warning of its own status.
        m_ran = std::system(command.c_str()) != -1;
        setenv("LOCPATH", m_directory.path().c_str(), 1);
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    ~CommaLocale() { unsetenv("LOCPATH"); }

    bool exists() const { return m_ran && m_directory.exists("comma/LC_NUMERIC"); }

private:
    TempDir m_directory;
    bool m_ran = false;
};
