#include "component/gtk/RunningProgram.h"

#include <glibmm/iochannel.h>
#include <glibmm/main.h>
#include <glibmm/miscutils.h>
#include <glibmm/spawn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace kelo::tests {
namespace {

struct Ended {
    int status = -1;
    std::string output;
};

/// The environment of this process with the variables given set, or taken away where empty.
std::vector<std::string>
environmentWith(const std::vector<std::pair<std::string, std::string>>& changes) {
    std::vector<std::string> environment;
    for (const auto& name : Glib::listenv()) {
        const auto isChanged = std::any_of(changes.begin(), changes.end(), [&](const auto& change) {
            return change.first == name;
        });
        if (!isChanged)
            environment.push_back(name + "=" + Glib::getenv(name));
    }
    for (const auto& [name, value] : changes)
        if (!value.empty())
            environment.push_back(name + "=" + value);
    return environment;
}

Ended startAndWait(const std::vector<std::string>& environment,
                   const std::vector<std::string>& arguments = {}) {
    Ended ended;
    std::vector<std::string> command{KELO_START_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Glib::spawn_sync("", command, environment, Glib::SpawnFlags::DEFAULT, {}, &ended.output,
                     nullptr, &ended.status);
    return ended;
}

/// Runs a program while the main loop of this one continues.
Ended runBeside(const std::vector<std::string>& command) {
    Ended ended;
    bool isOver = false;
    Glib::Pid child{};
    int output = -1;
    Glib::spawn_async_with_pipes(
        "", command, Glib::SpawnFlags::DO_NOT_REAP_CHILD | Glib::SpawnFlags::SEARCH_PATH, {},
        &child, nullptr, &output);
    Glib::signal_child_watch().connect(
        [&](Glib::Pid, int status) {
            ended.status = status;
            isOver = true;
        },
        child);
    RunningProgram::until("the other program has ended", [&] { return isOver; });
    Glib::ustring said;
    Glib::IOChannel::create_from_fd(output)->read_to_end(said);
    ended.output = said.raw();
    return ended;
}

TEST(SecondStart, OpensTheWindowOfTheRunningProgramAndEnds) {
    RunningProgram program;
    program.run([&] {
        program.window("Kelo").close();
        RunningProgram::settle();
        const auto ended = runBeside({KELO_START_PROGRAM});
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.output, "") << "it must not build a system of its own";
        RunningProgram::until("the window is open again",
                              [&] { return program.app.count("appear") == 2; });
        EXPECT_EQ(program.app.count("body"), 1);
    });
}

TEST(SecondStart, WithAnActionAsksTheRunningProgramForItAndOpensNoWindow) {
    RunningProgram program;
    program.run([&] {
        program.window("Kelo").close();
        RunningProgram::settle();
        const auto ended = runBeside({KELO_START_PROGRAM, "--wave"});
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.output, "");
        RunningProgram::until("the action was run", [&] { return program.app.count("wave") == 1; });
        RunningProgram::settle();
        EXPECT_EQ(program.app.count("appear"), 1);
        EXPECT_TRUE(program.windowsOnScreen().empty());
    });
}

TEST(RunningInstance, OffersItsActionsOnTheSessionBus) {
    RunningProgram program;
    program.run([&] {
        const auto ended =
            runBeside({"gdbus", "call", "--session", "--dest", "app.kelo.Kelo", "--object-path",
                       "/app/kelo/Kelo", "--method", "org.freedesktop.Application.ActivateAction",
                       "wave", "[]", "{}"});
        EXPECT_EQ(ended.status, 0);
        RunningProgram::until("the action was run", [&] { return program.app.count("wave") == 1; });
    });
}

TEST(FirstStart, WithAnActionRunsItAndOpensNoWindow) {
    const auto ended = startAndWait(environmentWith({{"GTK_A11Y", "none"}}), {"--wave"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "body\nwave\n"); // the tray and its menu are there all the same
}

TEST(FirstStart, LeavesTheStreamsAsTheyAreUnderTheUsersLocale) {
    const auto ended =
        startAndWait(environmentWith({{"GTK_A11Y", "none"}, {"LC_ALL", "C.UTF-8"}}), {"--wave"});
    EXPECT_EQ(ended.status, 0);
}

TEST(FirstStart, ToQuitARunningProgramEndsWhereThereIsNone) {
    const auto ended = startAndWait(environmentWith({{"GTK_A11Y", "none"}}), {"--quit"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "");
}

TEST(FirstStart, WithAReportPrintsItAndStartsNothing) {
    const auto ended = startAndWait(environmentWith({{"DISPLAY", ""}}), {"--weather"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "fine\n");
}

TEST(FirstStart, WithWhatItDoesNotKnowIsRefused) {
    for (const char* argument : {"--fly", "document.txt"}) {
        const auto ended = startAndWait(environmentWith({{"GTK_A11Y", "none"}}), {argument});
        EXPECT_NE(ended.status, 0) << argument;
        EXPECT_EQ(ended.output, "") << argument;
    }
}

TEST(StartWithoutSessionBus, RunsForItselfAndDoesNotWait) {
    for (const char* address : {"", "unix:path=/nonexistent/bus"}) {
        const auto begin = std::chrono::steady_clock::now();
        const auto ended = startAndWait(
            environmentWith({{"DBUS_SESSION_BUS_ADDRESS", address},
                             {"XDG_RUNTIME_DIR", Glib::getenv("HOME")}, // has no bus socket
                             {"GTK_A11Y", "none"}}));
        EXPECT_EQ(ended.status, 0) << address;
        EXPECT_EQ(ended.output, "body\nappear\n") << address;
        // A call on a missing bus would fail only after 25 s.
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(25)) << address;
    }
}

} // namespace
} // namespace kelo::tests
