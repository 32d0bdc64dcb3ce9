// krlab watch: builds are noticed, files of no concern are not, and Ctrl-C ends it.
#include "fakerig.h"
#include "filewatch.h"
#include "interrupt.h"
#include "labprocess.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <thread>

using namespace krlab;

TEST(LabWatch, ASignalThatWasTakenBackWakesNobody) {
    watchInterrupts();
    std::raise(SIGINT);
    EXPECT_TRUE(interrupted());
    setInterrupted(false);
    pollfd waiting = {interruptDescriptor(), POLLIN, 0};
    EXPECT_EQ(::poll(&waiting, 1, 0), 0);
}

TEST(LabWatch, ReplacedFilesCountAndOthersDoNot) {
    const TempDir directory;
    directory.write("lib.so", "1");
    FileWatch watch({directory.path("lib.so")});
    std::thread builder([&] {
        directory.write("other.so", "1");
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        directory.write("new", "2");
        std::filesystem::rename(directory.path("new"), directory.path("lib.so"));
    });
    EXPECT_TRUE(watch.wait(0.01));
    EXPECT_EQ(directory.read("lib.so"), "2");
    builder.join();
    EXPECT_THROW(FileWatch({"/nowhere/lib.so"}), std::exception);
}

TEST(LabWatch, TellsWhatTheBuildDidToEachLine) {
    const std::string script =
        scriptHead + scriptTest("f1") + "fi\n" + scriptTest("f2") + "fi\n" + scriptTest("f3") + "fi\n" + scriptEnd;
    const FakeRig rig(script);
    const LabDirectory directory;
    const pid_t process = directory.start(
        {"--rig", rig.subject().program, "watch", "--passes", "3", "--json", "w.json", "--", "-dMethod=Auto"});
    ASSERT_TRUE(comesTrue([&] { return directory.read("err").find("waiting for a build") != std::string::npos; }));
    // The second function takes twice as long; the same file once more is no build.
    std::string text;
    {
        std::ifstream in(rig.file("rig.sh"));
        text.assign(std::istreambuf_iterator<char>(in), {});
    }
    const size_t second = text.rfind("stopClocks = 401", text.rfind("stopClocks = 401") - 1);
    text.replace(second, 16, "stopClocks = 802");
    const size_t told = text.find("25.1", second);
    text.replace(told, 4, "50.1");
    text.replace(text.find("25.1", told), 4, "50.1");
    rig.write("rig.sh", text);
    ASSERT_TRUE(comesTrue([&] { return directory.read("out").find("all together") != std::string::npos; }))
        << directory.read("err");
    rig.write("rig.sh", text);
    ASSERT_TRUE(comesTrue([&] {
        const std::string err = directory.read("err");
        return err.find("waiting", err.find("waiting", err.find("waiting") + 1) + 1) != std::string::npos;
    }));
    ::kill(process, SIGINT);
    const LabResult result = directory.wait(process);
    EXPECT_EQ(result.status, 130);
    EXPECT_NE(result.out.find("  +100.0     25.062     50.125  slower     f2 Len/Size=8"), std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("3 lines: 1 slower, 0 faster, 2 same, 0 undecided"), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find("all together"), result.out.rfind("all together"));
    EXPECT_EQ(nlohmann::json::parse(directory.read("w.json"))["summary"]["slower"], 1);
}
