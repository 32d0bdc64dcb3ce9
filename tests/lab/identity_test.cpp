// Digests, build-ids, subjects, and the identity's way through JSON.
#include "buildid.h"
#include "fault.h"
#include "identity.h"
#include "sha256.h"
#include "tempdir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace krlab;

TEST(LabIdentity, DigestsAreThoseOfTheStandard) {
    EXPECT_EQ(sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(sha256(std::string(1000000, 'a')), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(LabIdentity, BuildIdOfDamagedFilesIsEmpty) {
    EXPECT_EQ(buildIdOf(""), "");
    EXPECT_EQ(buildIdOf("#!/bin/sh\n"), "");
    std::ifstream in(KELVARRIG, std::ios::binary);
    std::string head(4096, 0);
    in.read(head.data(), 4096);
    for (size_t size = 0; size < head.size(); size += 7) {
        buildIdOf(std::string_view(head).substr(0, size));
    }
    for (size_t i = 0; i < 1024; ++i) {
        std::string damaged = head;
        damaged[i] = static_cast<char>(0xff);
        buildIdOf(damaged);
    }
}

TEST(LabIdentity, IdentitySurvivesJson) {
    Identity identity = identify({"mine", KELVARRIG, {}});
    identity.keys = {"-fX"};
    identity.arguments = {"a", "b"};
    identity.ended = timeText();
    identity.rigLibrary = "libveksc, 1.0.0";
    const Identity back = identityFromJson(toJson(identity));
    EXPECT_EQ(toJson(back), toJson(identity));
    EXPECT_TRUE(sameSubject(back, identity));
    EXPECT_EQ(back.libraries.size(), 3u);
    EXPECT_GT(back.machine.counterMHz, 100);
    EXPECT_EQ(back.started.size(), std::string("2026-11-22T02:30:05+01:00").size());
}

TEST(LabSubject, DirectoriesProgramsAndBothAreTaken) {
    const std::string rig = KELVARRIG;
    const Subject program = parseSubject("new=" + rig, "");
    EXPECT_EQ(program.name, "new");
    EXPECT_EQ(program.program, rig);
    EXPECT_TRUE(program.libraries.empty());
    const Subject libraries = parseSubject(VEK_LIBRARY_DIR, rig);
    EXPECT_EQ(libraries.name, VEK_LIBRARY_DIR);
    EXPECT_EQ(libraries.program, rig);
    EXPECT_EQ(libraries.libraries, std::filesystem::canonical(VEK_LIBRARY_DIR));
    const Subject both = parseSubject(std::string("x=") + rig + "," + VEK_LIBRARY_DIR, "");
    EXPECT_EQ(both.program, rig);
    EXPECT_EQ(both.libraries, std::filesystem::canonical(VEK_LIBRARY_DIR));
}

TEST(LabSubject, WhatIsMissingIsTold) {
    const TempDir directory;
    try {
        parseSubject(directory.path(), KELVARRIG);
        FAIL();
    } catch (const Fault& fault) {
        EXPECT_EQ(fault.what(), directory.path() + ": libvekcore.so.1, libveks.so.1, libveksc.so.1 are not there; "
                                                   "name a directory with all three libraries");
    }
    EXPECT_THROW(parseSubject("/nowhere", KELVARRIG), Fault);
    EXPECT_THROW(parseSubject("a=", KELVARRIG), Fault);
}

TEST(LabSubject, TheLoaderTakesTheSubjectsLibraries) {
    const TempDir directory;
    for (const char* name : {"libvekcore.so.1", "libveks.so.1", "libveksc.so.1"}) {
        std::filesystem::copy_file(std::string(VEK_LIBRARY_DIR) + "/" + name, directory.path(name));
    }
    const Identity identity = identify(parseSubject(directory.path(), KELVARRIG));
    ASSERT_EQ(identity.libraries.size(), 3u);
    for (const FileIdentity& file : identity.libraries) {
        EXPECT_EQ(file.path, std::filesystem::canonical(directory.path(file.name)));
    }
}
