// A directory for the files of one test.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

/// A fresh directory that goes with the object, with all that is in it.
class TempDir {
public:
    TempDir() {
        const std::string stem = (std::filesystem::temp_directory_path() / "rigtest").string();
        int number = getpid();
        // Another process may hold the name.
        do {
            m_path = stem + std::to_string(number++);
        } while (!std::filesystem::create_directory(m_path));
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::string& path() const { return m_path; }
    std::string path(const std::string& name) const { return m_path + "/" + name; }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(path(name), std::ios::binary) << text;
    }
    bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }
    /// The whole text of a file; none for a file that is not there.
    std::string read(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        std::stringstream text;
        text << file.rdbuf();
        return text.str();
    }

private:
    std::string m_path;
};
