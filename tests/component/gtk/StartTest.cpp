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

Ended startAndWait(const std::vector<std::string>& environment) {
    Ended ended;
    Glib::spawn_sync("", {KELO_START_PROGRAM}, environment, Glib::SpawnFlags::DEFAULT, {},
                     &ended.output, nullptr, &ended.status);
    return ended;
}

TEST(SecondStart, OpensTheWindowOfTheRunningProgramAndEnds) {
    RunningProgram program;
    program.run([&] {
        program.window("Kelo").close();
        RunningProgram::settle();

        Ended ended;
        bool isOver = false;
        Glib::Pid child{};
        int output = -1;
        Glib::spawn_async_with_pipes("", std::vector<std::string>{KELO_START_PROGRAM},
                                     Glib::SpawnFlags::DO_NOT_REAP_CHILD, {}, &child, nullptr,
                                     &output);
        Glib::signal_child_watch().connect(
            [&](Glib::Pid, int status) {
                ended.status = status;
                isOver = true;
            },
            child);
        RunningProgram::until("the second start has ended", [&] { return isOver; });
        EXPECT_EQ(ended.status, 0);
        const auto channel = Glib::IOChannel::create_from_fd(output);
        Glib::ustring said;
        channel->read_to_end(said);
        EXPECT_EQ(said.raw(), "") << "it must not build a system of its own";
        RunningProgram::until("the window is open again",
                              [&] { return program.app.count("appear") == 2; });
        EXPECT_EQ(program.app.count("body"), 1);
    });
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
        // A call on a bus that is not there would take 25 s to give up.
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15)) << address;
    }
}

} // namespace
} // namespace kelo::tests
