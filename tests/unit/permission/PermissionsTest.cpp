#include "linux/permission/Permissions.h"

#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace kelo::permission {
namespace {

using std::filesystem::perms;

/// As long as it lives, this process can write nothing into files.
class FullDisk {
public:
    FullDisk() : former(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit none{0, limit.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, former);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit limit{};
    void (*former)(int);
};

class PermissionsFile : public testing::Test {
protected:
    const test::TemporaryFolder folder;
    const std::string path = (folder / "state" / "permissions").string();
};

TEST_F(PermissionsFile, NothingIsDecidedAtFirst) {
    const Permissions permissions(path, "https://one.example");
    for (const auto capability : capabilities)
        EXPECT_EQ(permissions.answer(capability), Answer::ask);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(PermissionsFile, AnswersAreThereAtTheNextStart) {
    Permissions before(path, "https://one.example");
    before.remember(Capability::microphone, Answer::allowed);
    before.remember(Capability::notifications, Answer::denied);
    const Permissions after(path, "https://one.example");
    EXPECT_EQ(after.answer(Capability::microphone), Answer::allowed);
    EXPECT_EQ(after.answer(Capability::camera), Answer::ask);
    EXPECT_EQ(after.answer(Capability::notifications), Answer::denied);
}

TEST_F(PermissionsFile, AnswerThatWasTakenBackIsForgotten) {
    Permissions before(path, "https://one.example");
    before.remember(Capability::camera, Answer::allowed);
    before.remember(Capability::camera, Answer::ask);
    EXPECT_EQ(before.answer(Capability::camera), Answer::ask);
    const Permissions after(path, "https://one.example");
    EXPECT_EQ(after.answer(Capability::camera), Answer::ask);
}

TEST_F(PermissionsFile, AnotherServiceHasNoAnswers) {
    Permissions before(path, "https://one.example");
    before.remember(Capability::microphone, Answer::allowed);
    const Permissions after(path, "https://two.example");
    EXPECT_EQ(after.answer(Capability::microphone), Answer::ask);
}

TEST_F(PermissionsFile, OnlyTheUserCanReadIt) {
    Permissions permissions(path, "https://one.example");
    permissions.remember(Capability::microphone, Answer::allowed);
    EXPECT_EQ(std::filesystem::status(path).permissions(), perms::owner_read | perms::owner_write);
    EXPECT_EQ(std::filesystem::status(folder / "state").permissions(), perms::owner_all);
}

TEST_F(PermissionsFile, WhatCannotBeReadAllowsNothing) {
    std::filesystem::create_directories(folder / "state");
    for (const char* const text : {"", "[permissions", "[permissions]\nmicrophone=allowed\n",
                                   "[permissions]\nservice=https://one.example\nmicrophone=yes\n",
                                   "[other]\nservice=https://one.example\nmicrophone=allowed\n"}) {
        std::ofstream(path) << text;
        const Permissions permissions(path, "https://one.example");
        EXPECT_EQ(permissions.answer(Capability::microphone), Answer::ask) << text;
    }
}

TEST_F(PermissionsFile, FolderThatCannotBeWrittenLeavesTheAnswerForThisProcess) {
    Permissions permissions("/proc/nowhere/permissions", "https://one.example");
    permissions.remember(Capability::microphone, Answer::allowed);
    EXPECT_EQ(permissions.answer(Capability::microphone), Answer::allowed);
}

// Otherwise the next start would allow again what was taken back.
TEST_F(PermissionsFile, AnswersThatCannotBeWrittenAreForgottenByTheNextStart) {
    Permissions before(path, "https://one.example");
    before.remember(Capability::microphone, Answer::allowed);
    {
        const FullDisk disk;
        before.remember(Capability::microphone, Answer::denied);
    }
    EXPECT_EQ(before.answer(Capability::microphone), Answer::denied);
    const Permissions after(path, "https://one.example");
    EXPECT_EQ(after.answer(Capability::microphone), Answer::ask);
}

TEST_F(PermissionsFile, ObserversAreToldBeforeTheChange) {
    Permissions permissions(path, "https://one.example");
    std::vector<Answer> seen;
    const auto observation =
        permissions.observe([&] { seen.push_back(permissions.answer(Capability::microphone)); });
    permissions.remember(Capability::microphone, Answer::allowed);
    EXPECT_EQ(seen, std::vector{Answer::ask});
}

} // namespace
} // namespace kelo::permission
