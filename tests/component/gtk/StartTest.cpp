#include "component/gtk/RunningProgram.h"
#include "deployment/Deployment.h"

#include <giomm/dbusconnection.h>
#include <glibmm/iochannel.h>
#include <glibmm/main.h>
#include <glibmm/miscutils.h>
#include <glibmm/spawn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <sys/wait.h>

namespace kelo::tests {
namespace {

std::string origin() {
    return std::string(deployment::serviceOrigin);
}

struct Ended {
    int status = -1;
    std::string output;
    std::string errors;
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
                     &ended.errors, &ended.status);
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

TEST(SecondStart, WithAPageOfTheServiceShowsItInTheWindowOfTheRunningProgram) {
    RunningProgram program;
    program.run([&] {
        const std::string address = origin() + "/chat/7?from=mail#last";
        for (const bool isOpen : {true, false}) {
            if (!isOpen)
                program.window("Kelo").close();
            RunningProgram::settle();
            program.app.page->loads.clear();
            const auto ended = runBeside({KELO_START_PROGRAM, address});
            EXPECT_EQ(ended.status, 0);
            EXPECT_EQ(ended.output, "");
            program.window("Kelo");
            RunningProgram::until("the page is loaded",
                                  [&] { return !program.app.page->loads.empty(); });
            EXPECT_EQ(program.app.page->loads.back().url.absoluteString(), address);
        }
        RunningProgram::until("the closed window appeared again",
                              [&] { return program.app.count("appear") == 2; });
    });
}

TEST(RunningInstance, ShowsNoPageOfAnotherSiteWhoeverAsks) {
    RunningProgram program;
    program.run([&] {
        for (const char* address : {"https://elsewhere.example/", "file:///etc/passwd", ""})
            EXPECT_EQ(runBeside({"gdbus", "call", "--session", "--dest", "app.kelo.Kelo",
                                 "--object-path", "/app/kelo/Kelo", "--method",
                                 "org.freedesktop.Application.ActivateAction", "show-page",
                                 "[<'" + std::string(address) + "'>]", "{}"})
                          .status,
                      0);
        RunningProgram::settle();
        EXPECT_TRUE(program.app.page->loads.empty());
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

TEST(FirstStart, WithAPageOfTheServiceOpensTheWindowOnIt) {
    const auto ended =
        startAndWait(environmentWith({{"GTK_A11Y", "none"}}), {origin() + "/chat/7"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "body\nappear\nload " + origin() + "/chat/7\n");
}

TEST(FirstStart, WithAnotherAddressThanOneOfTheServiceIsRefusedWithASentence) {
    const std::string secondAddress = origin() + "/b";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"https://elsewhere.example/"},
          {"http" + origin().substr(5)},
          {origin() + "1/"},
          {"document.txt"},
          {origin() + "/a", secondAddress}}) {
        const auto ended =
            startAndWait(environmentWith({{"GTK_A11Y", "none"}, {"DISPLAY", ""}}), arguments);
        EXPECT_EQ(WEXITSTATUS(ended.status), 2) << arguments.front();
        EXPECT_EQ(ended.output, "") << arguments.front();
        EXPECT_EQ(ended.errors, "kelo: Kelo opens one page of " + origin() +
                                    ". Open other addresses in your browser.\n"
                                    "Try \"kelo --help\".\n");
    }
}

TEST(FirstStart, InTheBackgroundOpensNoWindow) {
    const std::string program = KELO_START_PROGRAM;
    const auto both =
        runBeside({"sh", "-c",
                   program + " --background & gdbus wait --session --timeout 30 app.kelo.Kelo && " +
                       program + " --background && " + program + " --wave; wait"});
    EXPECT_EQ(both.status, 0);
    EXPECT_EQ(both.output, "body\nwave\n");
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

TEST(FirstStart, WithAnOptionThatCouldNotDoItsWorkFails) {
    const auto ended = startAndWait(environmentWith({{"DISPLAY", ""}}), {"--rain", "--weather"});
    EXPECT_EQ(WEXITSTATUS(ended.status), 1);
    EXPECT_EQ(ended.output, "fine\n") << "what failed is said on the other stream";
}

TEST(FirstStart, WithWhatItDoesNotKnowIsRefused) {
    for (const char* argument : {"--fly", "-x"}) {
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

/// Has the program's name on the session bus, and ends as soon as it is asked anything.
class DyingProgram {
public:
    DyingProgram() {
        connection->call_sync("/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                              Glib::Variant<std::tuple<Glib::ustring, guint32>>::create(
                                  {std::string(deployment::applicationIdentifier), 0}),
                              "org.freedesktop.DBus");
        g_dbus_connection_add_filter(connection->gobj(), &endWhenAsked, nullptr, nullptr);
    }

private:
    static GDBusMessage* endWhenAsked(GDBusConnection* connection, GDBusMessage* message,
                                      gboolean isIncoming, gpointer) {
        if (isIncoming &&
            g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL)
            g_dbus_connection_close(connection, nullptr, nullptr, nullptr);
        return message;
    }

    const Glib::RefPtr<Gio::DBus::Connection> connection =
        Gio::DBus::Connection::create_for_address_sync(
            Glib::getenv("DBUS_SESSION_BUS_ADDRESS"),
            Gio::DBus::ConnectionFlags::AUTHENTICATION_CLIENT |
                Gio::DBus::ConnectionFlags::MESSAGE_BUS_CONNECTION);
};

TEST(StartBesideAProgramThatEnds, RunsForItself) {
    RunningProgram program;
    const DyingProgram other;
    program.run([&] { EXPECT_EQ(program.app.count("appear"), 1); });
    EXPECT_EQ(program.status, 0);
    EXPECT_EQ(program.app.count("appear"), 1);
}

} // namespace
} // namespace kelo::tests
