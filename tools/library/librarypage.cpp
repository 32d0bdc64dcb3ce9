// librarypage TABLE FIGURES DOCUMENT: writes the document of the library's functions.
#include "functiontable.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>

int main(int argc, char** argv) {
    try {
        if (argc != 4) {
            throw std::runtime_error("usage: TABLE FIGURES DOCUMENT");
        }
        std::ifstream file(argv[1], std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        if (!file) {
            throw std::runtime_error(std::string(argv[1]) + ": can't be read");
        }
        const std::string page = library::document(library::readTable(text), library::readFiguresOf(argv[2]));
        std::ofstream written(argv[3], std::ios::binary | std::ios::trunc);
        written << page;
        written.close();
        if (!written) {
            throw std::runtime_error(std::string(argv[3]) + ": can't be written");
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "librarypage: %s\n", error.what());
        return 1;
    }
}
