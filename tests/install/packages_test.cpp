// The Debian packages: built, looked at, installed into a root of their own, used and removed.
#include "consumer.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// The folder with the three packages of the build under test.
const TempDir& packages() {
    static const TempDir folder;
    static const ShellResult built =
        runShellScript(folder, "cpack --config '" KELVARRIG_BUILD "/CPackConfig.cmake' -B \"$PWD/packages\" && "
                               "rm -r packages/_CPack_Packages");
    EXPECT_EQ(0, built.exitCode) << built.out;
    return folder;
}

class KrPackages : public testing::Test {
protected:
    void SetUp() override {
        for (const char* program : {"cpack", "dpkg-deb", "dpkg-shlibdeps", "file"}) {
            KR_SKIP_WITHOUT(program);
        }
    }
    static ShellResult run(const std::string& script) { return runShellScript(packages(), "set -e\n" + script); }
};

} // namespace

TEST_F(KrPackages, AreThree) {
    const ShellResult list = run("ls packages");
    EXPECT_EQ("kelvar-rig-dev_2.0_amd64.deb\nkelvar-rig_2.0_amd64.deb\nlibvek1_2.0_amd64.deb\n", list.out);
}

TEST_F(KrPackages, HaveNoErrorThatLintianKnows) {
    KR_SKIP_WITHOUT("lintian");
    const ShellResult looked =
        run("lintian --fail-on error $([ \"$(id -u)\" != 0 ] || echo --allow-root) packages/*.deb");
    EXPECT_EQ(0, looked.exitCode) << looked.out;
}

TEST_F(KrPackages, ProgramAndHeadersWantTheLibraryPackage) {
    EXPECT_TRUE(holds(run("dpkg-deb -f packages/kelvar-rig_*.deb Depends").out, "libvek1 (>= 2.0), libc6"));
    EXPECT_EQ("libvek1 (= 2.0)\n", run("dpkg-deb -f packages/kelvar-rig-dev_*.deb Depends").out);
    EXPECT_EQ("libvekcore 1 libvek1 (>= 2.0)\nlibveks 1 libvek1 (>= 2.0)\nlibveksc 1 libvek1 (>= 2.0)\n",
              run("dpkg-deb -I packages/libvek1_*.deb shlibs").out);
    EXPECT_EQ("", run("dpkg-deb -I packages/libvek1_*.deb symbols | cmp - '" KELVARRIG_SOURCE "/vek/symbols'").out);
}

// dpkg itself, on a root and a list of packages of their own: nothing of this machine changes.
TEST_F(KrPackages, AreInstalledUsedAndRemoved) {
    KR_SKIP_WITHOUT("dpkg");
    const std::string asRoot = getuid() == 0 ? "" : "fakeroot ";
    if (!asRoot.empty()) {
        KR_SKIP_WITHOUT("fakeroot");
    }
    const std::string dpkg = "mkdir -p root/var/lib/dpkg/info root/var/lib/dpkg/updates tools\n"
                             "touch root/var/lib/dpkg/status\n"
                             // The machine's own cache of libraries is none of this root's business.
                             "printf '#!/bin/sh\\n' >tools/ldconfig\nchmod +x tools/ldconfig\n"
                             "export PATH=\"$PWD/tools:$PATH:/usr/sbin:/sbin\"\n" +
                             asRoot +
                             "dpkg --root=\"$PWD/root\" --log=/dev/null --force-not-root --force-depends "
                             "--force-script-chrootless ";
    const ShellResult installed = run(dpkg + "-i packages/*.deb");
    ASSERT_EQ(0, installed.exitCode) << installed.out;
    const std::string root = packages().path("root");

    const Consumer consumer;
    const ShellResult used = consumer.run("LD_DEBUG=libs '" + root + "/usr/bin/kelvarrig'" + quickKeys +
                                          "-f=veksDotProd_G729A_16s32s -dlen=40");
    EXPECT_EQ(0, used.exitCode) << used.out;
    EXPECT_GT(consumer.clocks("out.csv", "veksDotProd_G729A,16s32s,-"), 0) << used.out;
    EXPECT_TRUE(holds(used.out, "calling init: " + root + "/usr/bin/../lib/libveksc.so.1")) << used.out;
    consumer.write("CMakeLists.txt", "cmake_minimum_required(VERSION 3.22)\nproject(mygain LANGUAGES CXX)\n"
                                     "find_package(KelvarRig 2.0 REQUIRED)\n"
                                     "kelvarrig_add_rig(mygain SOURCES mygain_rig.cpp mygain.cpp)\n");
    const ShellResult own = consumer.run("cmake -B build -G Ninja '-DCMAKE_PREFIX_PATH=" + root +
                                         "/usr'\ncmake --build build\nbuild/mygain" + quickKeys);
    EXPECT_EQ(0, own.exitCode) << own.out;
    EXPECT_GT(consumer.clocks("out.csv", "myGain"), 0) << own.out;

    const ShellResult removed = run(dpkg + "--purge kelvar-rig kelvar-rig-dev libvek1");
    EXPECT_EQ(0, removed.exitCode) << removed.out;
    EXPECT_EQ("", run("find root -path root/var -prune -o -not -type d -print").out);
}
