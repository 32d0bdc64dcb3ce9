#include "pagefiles.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace pages {

namespace {

std::string readFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    if (!file) {
        throw std::runtime_error(name + ": can't be read");
    }
    return text.str();
}

void writeFile(const std::string& name, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(name).parent_path());
    std::ofstream file(name, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) {
        throw std::runtime_error(name + ": can't be written");
    }
}

} // namespace

PageCall readCall(int argc, char** argv) {
    if (argc != 5) {
        throw std::runtime_error("usage: TEMPLATES SHARE DATE VERSION");
    }
    return {argv[1], argv[2], {{"DATE", argv[3]}, {"VERSION", argv[4]}}};
}

std::string filled(const std::string& text, const Values& values) {
    std::string out;
    size_t at = 0;
    for (size_t open = text.find('@'); open != std::string::npos; open = text.find('@', at)) {
        const size_t close = text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ", open + 1);
        if (close == std::string::npos || text[close] != '@' || close == open + 1) {
            out.append(text, at, open + 1 - at);
            at = open + 1;
            continue;
        }
        const auto value = values.find(text.substr(open + 1, close - open - 1));
        if (value == values.end()) {
            throw std::runtime_error("nothing is known for " + text.substr(open, close + 1 - open));
        }
        out.append(text, at, open - at);
        out += value->second;
        at = close + 1;
    }
    return out + text.substr(at);
}

void writePages(const PageCall& call, const std::string& command, const Values& forMan, const Values& forBash,
                const Values& forZsh, const Values& forFish) {
    const auto write = [&](const std::string& form, const std::string& file, Values values) {
        values.insert(call.common.begin(), call.common.end());
        const std::string source = call.templates + "/" + command + "." + form + ".in";
        try {
            writeFile(call.share + "/" + file, filled(readFile(source), values));
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(source + ": " + error.what());
        }
    };
    write("1", "man/man1/" + command + ".1", forMan);
    write("bash", "bash-completion/completions/" + command, forBash);
    write("zsh", "zsh/site-functions/_" + command, forZsh);
    write("fish", "fish/vendor_completions.d/" + command + ".fish", forFish);
}

int runPages(const char* program, void (*run)(int, char**), int argc, char** argv) {
    try {
        run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", program, error.what());
        return 1;
    }
    return 0;
}

} // namespace pages
