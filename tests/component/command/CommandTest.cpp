#include "bundle/ProgramPlace.h"
#include "component/ScopedMainLoop.h"
#include "component/bus/StartingBus.h"
#include "component/installer/Trees.h"
#include "component/session/StandInServices.h"
#include "deployment/Deployment.h"
#include "linux/command/ProgramOptions.h"
#include "testing/LocaleFolder.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::tests {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

namespace fs = std::filesystem;

/// The program that runs already, as far as the bus sees it. Notes what it is asked, and with which
/// permission to come to the front.
class RunningProgram final : public test::StandInService {
public:
    static constexpr const char* name = "app.kelo.Kelo";

    explicit RunningProgram(const SessionBus& bus) : StandInService(bus, name) {
        serve("/app/kelo/Kelo",
              "<node><interface name='org.freedesktop.Application'>"
              "<method name='Activate'><arg type='a{sv}' direction='in'/></method>"
              "<method name='ActivateAction'><arg type='s' direction='in'/>"
              "<arg type='av' direction='in'/><arg type='a{sv}' direction='in'/></method>"
              "</interface></node>");
    }

    std::vector<std::string> asked;
    bool refuses = false;

private:
    GVariant* answer(const std::string& method, GVariant* arguments) override {
        const gobject::GText text(g_variant_print(arguments, FALSE));
        asked.push_back(method + " " + text.get());
        return refuses ? nullptr : g_variant_new("()");
    }
};

struct Ended {
    int status = -1;
    std::string output;
    std::string errors;
};

/// The command in a tree of its own, whose program is a script that says how it was run.
class Command : public testing::Test {
protected:
    Command() {
        fs::create_directories(root / "bin");
        fs::copy_file(KELO_COMMAND, root / "bin/kelo");
        writeFile(program(), "#!/bin/sh\necho \"program below $PPID:$#:$*\"\nexit 7\n", 0755);
        set("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str());
        for (const char* name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID", "DISPLAY",
                                 "WAYLAND_DISPLAY", "LANGUAGE", "LC_ALL"})
            set(name, nullptr);
    }

    fs::path program() const { return bundle::programBehind(root); }
    void set(const char* name, const char* value) {
        if (value)
            g_subprocess_launcher_setenv(launcher.get(), name, value, TRUE);
        else
            g_subprocess_launcher_unsetenv(launcher.get(), name);
    }

    Ended run(const std::vector<std::string>& arguments) {
        const std::string command = root / "bin/kelo";
        std::vector<const char*> words{command.c_str()};
        for (const auto& argument : arguments)
            words.push_back(argument.c_str());
        words.push_back(nullptr);
        const auto process = gobject::GObjectPointer<GSubprocess>::adopt(
            g_subprocess_launcher_spawnv(launcher.get(), words.data(), nullptr));
        EXPECT_TRUE(process);
        gobject::GObjectPointer<GAsyncResult> result;
        g_subprocess_communicate_utf8_async(
            process.get(), nullptr, nullptr,
            [](GObject*, GAsyncResult* finished, gpointer data) {
                *static_cast<gobject::GObjectPointer<GAsyncResult>*>(data) =
                    gobject::GObjectPointer<GAsyncResult>::share(finished);
            },
            &result);
        EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return static_cast<bool>(result); }));
        char* output = nullptr;
        char* errors = nullptr;
        EXPECT_TRUE(g_subprocess_communicate_utf8_finish(process.get(), result.get(), &output,
                                                         &errors, nullptr));
        const gobject::GText outputOwner(output);
        const gobject::GText errorsOwner(errors);
        return {g_subprocess_get_exit_status(process.get()), output, errors};
    }
    /// Runs the command and expects that the program was run in its place, as a child of this
    /// process, with the same words.
    Ended expectTheProgram(const std::vector<std::string>& arguments) {
        auto ended = run(arguments);
        std::string words;
        for (const auto& argument : arguments)
            words += (words.empty() ? "" : " ") + argument;
        EXPECT_EQ(ended.output, "program below " + std::to_string(::getpid()) + ":" +
                                    std::to_string(arguments.size()) + ":" + words + "\n");
        return ended;
    }

    ScopedMainLoop loop;
    TreeFolder folder;
    fs::path root = folder / "Kelo";
    SessionBus bus{folder.path()};
    gobject::GObjectPointer<GSubprocessLauncher> launcher =
        gobject::GObjectPointer<GSubprocessLauncher>::adopt(
            g_subprocess_launcher_new(static_cast<GSubprocessFlags>(
                G_SUBPROCESS_FLAGS_STDOUT_PIPE | G_SUBPROCESS_FLAGS_STDERR_PIPE)));
};

/// The same with a program that runs already.
class CommandBesideTheProgram : public Command {
protected:
    void SetUp() override { ASSERT_TRUE(running.waitUntilOwned(bus)); }

    RunningProgram running{bus};
};

std::string page() {
    return std::string(deployment::serviceOrigin) + "/chat/7?from=mail#last";
}

TEST_F(CommandBesideTheProgram, WithoutWordsOpensItsWindow) {
    const auto ended = run({});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "") << "no second program is loaded";
    EXPECT_THAT(running.asked, ElementsAre("Activate ({},)"));
}

TEST_F(CommandBesideTheProgram, HandsOverActionsInTheirOrderAndThenThePage) {
    const auto ended = run({"--widget", page(), "--settings"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(running.asked,
                ElementsAre("ActivateAction ('settings', [], {})",
                            "ActivateAction ('widget', [], {})",
                            "ActivateAction ('show-page', [<'" + page() + "'>], {})"));
}

TEST_F(CommandBesideTheProgram, HandsOverAPageAlone) {
    EXPECT_EQ(run({page()}).status, 0);
    EXPECT_THAT(running.asked,
                ElementsAre("ActivateAction ('show-page', [<'" + page() + "'>], {})"));
}

TEST_F(CommandBesideTheProgram, PassesOnThatItMayComeToTheFront) {
    set("XDG_ACTIVATION_TOKEN", "token-1");
    set("DESKTOP_STARTUP_ID", "start-2");
    const std::string data = "{'activation-token': <'token-1'>, 'desktop-startup-id': <'start-2'>}";
    run({});
    run({"--widget"});
    set("XDG_ACTIVATION_TOKEN", "");
    set("DESKTOP_STARTUP_ID", "");
    run({});
    EXPECT_THAT(running.asked,
                ElementsAre("Activate (" + data + ",)",
                            "ActivateAction ('widget', [], " + data + ")", "Activate ({},)"));
}

TEST_F(CommandBesideTheProgram, AnswersForItselfWhatNeedsNoProgram) {
    EXPECT_EQ(run({"--version"}).output, command::versionLine() + "\n");
    EXPECT_THAT(run({"--help"}).output, HasSubstr("--widget"));
    EXPECT_THAT(running.asked, IsEmpty());
}

TEST_F(CommandBesideTheProgram, LeavesReportsToTheProgram) {
    expectTheProgram({"--hotkey-status"});
    expectTheProgram({"--version", "--remove"});
    EXPECT_THAT(running.asked, IsEmpty());
}

TEST_F(CommandBesideTheProgram, BecomesTheProgramWhereThatOneFails) {
    running.refuses = true;
    expectTheProgram({"--widget"});
}

TEST_F(CommandBesideTheProgram, RefusesWhatIsWrongAndAsksNobody) {
    for (const char* wrong : {"--fly", "https://elsewhere.example/", "document.txt"}) {
        const auto ended = run({wrong});
        EXPECT_EQ(ended.status, 2) << wrong;
        EXPECT_EQ(ended.output, "") << wrong;
        EXPECT_THAT(ended.errors, StartsWith("kelo: ")) << wrong;
    }
    EXPECT_THAT(running.asked, IsEmpty());
}

TEST_F(Command, BecomesTheProgramWithTheSameWords) {
    const auto ended = expectTheProgram({"--background", page()});
    EXPECT_EQ(ended.status, 7) << "the program's own";
    EXPECT_EQ(ended.errors, "");
}

TEST_F(Command, BecomesTheProgramWithoutASessionBus) {
    for (const char* address : {"", "unix:path=/nowhere/at/all", "nonsense"}) {
        set("DBUS_SESSION_BUS_ADDRESS", address);
        set("XDG_RUNTIME_DIR", folder.path().c_str());
        SCOPED_TRACE(address);
        expectTheProgram({"--widget"});
    }
}

// Otherwise a command that the bus itself has started would wait for itself.
TEST_F(Command, DoesNotHaveTheBusStartTheProgram) {
    fs::create_directories(folder / "services");
    const test::StartingBus starting(folder / "services",
                                     {RunningProgram::name, "org.example.Other"});
    set("DBUS_SESSION_BUS_ADDRESS", starting.address().c_str());
    expectTheProgram({"--widget"});
    expectTheProgram({});
    ASSERT_TRUE(starting.start("org.example.Other"));
    EXPECT_FALSE(starting.hasStarted(RunningProgram::name));
}

TEST_F(Command, SaysThatTheProgramCannotBeRun) {
    fs::permissions(program(), fs::perms::owner_read);
    for (const bool isThere : {true, false}) {
        if (!isThere)
            fs::remove(program());
        const auto ended = run({});
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.errors, "kelo: Kelo does not start, because " + program().string() +
                                    " cannot be run. Install Kelo again.\n");
    }
}

TEST_F(Command, DescribesEachOptionInTheOrderOfItsTable) {
    const std::string help = run({"--help"}).output;
    std::size_t at = 0;
    for (const auto& option : command::programOptions()) {
        at = help.find("  --" + option.name + " ", at);
        ASSERT_NE(at, std::string::npos) << option.name;
        EXPECT_NE(help.find(option.description, at), std::string::npos) << option.name;
    }
}

TEST_F(Command, SpeaksTheUsersLanguage) {
    test::LocaleFolder locales;
    locales.add("de_DE");
    if (!locales.holds("de_DE"))
        GTEST_SKIP() << "this machine cannot make locales";
    set("LOCPATH", locales.path().c_str());
    set("LC_ALL", "de_DE.UTF-8");
    fs::create_directories(root / "share");
    fs::create_directory_symlink(fs::path(KELO_BUILD_FOLDER) / "share/locale",
                                 root / "share/locale");
    EXPECT_THAT(run({"--help"}).output, HasSubstr("Die Einstellungen öffnen"));
}

// What a power cut leaves on a disk that cannot let two folders change places.
TEST_F(Command, FindsTheProgramThatAnUpdateHadMovedAway) {
    const auto work = folder / ".Kelo.kelo-update";
    fs::create_directories(work / "new/bin");
    fs::create_directories(work / "previous");
    writeFile(work / "new/bin/kelo", "#!/bin/sh\necho another\n", 0755);
    fs::rename(root / "libexec", work / "previous/libexec");
    expectTheProgram({"--widget"});
    EXPECT_TRUE(fs::exists(program()));
}

} // namespace
} // namespace kelo::tests
