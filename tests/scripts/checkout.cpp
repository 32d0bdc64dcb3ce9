#include "checkout.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

const std::string Checkout::s_folder = "Prüf stand";

Checkout::Checkout() : m_home("/bin/bash", "bash") {
    fs::create_directories(path() + "/cmake");
    fs::create_directories(path() + "/vek");
    for (const char* name : {"run", "test", "krlab", "CMakeLists.txt", "CMakePresets.json", "vek/CMakeLists.txt"}) {
        fs::copy(std::string(SCRIPTS_SOURCE "/") + name, path() + "/" + name);
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(SCRIPTS_SOURCE "/cmake")) {
        fs::copy(entry.path(), path() + "/cmake");
    }
    fs::create_directory(m_home.file("bin"));
    for (const char* name :
         {"awk",   "bash",   "cat",   "chmod", "date", "dirname", "env",  "git",  "grep", "head", "id", "ls",
          "mkdir", "mktemp", "nproc", "rm",    "sed",  "sleep",   "sort", "tail", "tput", "tr",   "wc", "xargs"}) {
        for (const std::string folder : {"/usr/bin/", "/bin/"}) {
            if (fs::exists(folder + name) && !fs::exists(m_home.file("bin/") + name)) {
                fs::create_symlink(folder + name, m_home.file("bin/") + name);
            }
        }
    }
    for (const char* name : {"g++", "c++", "ninja", "dpkg", "apt-get"}) {
        standIn(name, "");
    }
    standIn("ctest", "sleep 0.2\n");
    standIn("cmake", R"(
case $1 in
-N) exec ')" SCRIPTS_CMAKE R"(' "$@" ;;
--preset)
    case $2 in release | lab) dir=build ;; *) dir=build-$2 ;; esac
    echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" >"$dir/CMakeCache.txt"
    : >"$dir/build.ninja"
    ;;
--build)
    echo "[1/2] Building CXX object one.cpp.o"
    echo "[2/2] Linking CXX executable kelvarrig"
    for program in kelvarrig krlab; do
        printf '%s\n' '#!/usr/bin/env bash' 'printf "<%s>" "$@"; echo; exit 3' >"$2/$program"
        chmod +x "$2/$program"
    done
    ;;
esac
)");
}

RigResult Checkout::type(const std::string& command, const RigConsole& console) const {
    return m_home.run({"-c", "export PATH='" + m_home.file("bin") + "' TERM=dumb; cd '" + path() + "'\n" + command},
                      console);
}

void Checkout::standIn(const std::string& command, const std::string& script) const {
    takeAway(command);
    m_home.write("bin/" + command,
                 "#!/usr/bin/env bash\necho \"" + command + " $*\" >>'" + m_home.file("calls") + "'\n" + script);
    fs::permissions(m_home.file("bin/" + command), fs::perms::owner_all);
}

void Checkout::takeAway(const std::string& command) const {
    fs::remove(m_home.file("bin/" + command));
}

void Checkout::forgetCalls() const {
    fs::remove(m_home.file("calls"));
}

void expectTyped(const Checkout& checkout, const std::string& command, const std::string& told, int exitCode) {
    const RigResult result = checkout.type(command);
    EXPECT_EQ(told, result.out);
    EXPECT_EQ(exitCode, result.exitCode);
}
