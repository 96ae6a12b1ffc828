#include "linux/login/StartAtLogin.h"

#include "component/ScopedMainLoop.h"
#include "component/session/StandInServices.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace kelo::test {

namespace {

/// The desktop's portal for background programs. It answers when the test says so.
class BackgroundPortal final : public StandInService {
public:
    explicit BackgroundPortal(const SessionBus& bus)
        : StandInService(bus, "org.freedesktop.portal.Desktop") {
        serve("/org/freedesktop/portal/desktop",
              "<node><interface name='org.freedesktop.portal.Background'>"
              "<method name='RequestBackground'><arg type='s'/><arg type='a{sv}'/>"
              "<arg type='o' direction='out'/></method></interface></node>");
    }

    void respond(guint32 answer) const {
        GVariantBuilder results;
        g_variant_builder_init(&results, G_VARIANT_TYPE_VARDICT);
        send("/request", "org.freedesktop.portal.Request", "Response",
             g_variant_new("(ua{sv})", answer, &results));
    }

    int requests = 0;
    bool autostart = false;
    std::string command;

private:
    GVariant* answer(const std::string&, GVariant* arguments) override {
        ++requests;
        const GVariantPointer options(g_variant_get_child_value(arguments, 1));
        gboolean wanted = FALSE;
        g_variant_lookup(options.get(), "autostart", "b", &wanted);
        autostart = wanted;
        const GVariantPointer words(
            g_variant_lookup_value(options.get(), "commandline", G_VARIANT_TYPE("as")));
        command.clear();
        for (gsize index = 0; words && index < g_variant_n_children(words.get()); ++index) {
            const char* word = nullptr;
            g_variant_get_child(words.get(), index, "&s", &word);
            command += std::string(word) + ";";
        }
        return g_variant_new("(o)", "/request");
    }
};

class StartAtLogin : public testing::Test {
protected:
    void make(const std::string& address) {
        start = std::make_shared<login::StartAtLogin>(
            login::StartAtLogin::Settings{address, entry, "/home/ada/kelo/bin/kelo"});
        observation = start->observe([this] { ++changes; });
    }
    /// Has it turned on or off, and waits until that is settled.
    void set(bool on) {
        const int before = changes;
        start->setOn(on);
        EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return changes > before; }));
    }
    std::string written() const {
        std::ostringstream text;
        text << std::ifstream(entry).rdbuf();
        return text.str();
    }
    void write(const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(entry).parent_path());
        std::ofstream(entry) << text;
    }

    ScopedMainLoop loop;
    const TemporaryFolder folder;
    const std::string entry = folder / "autostart" / "app.kelo.Kelo.desktop";
    SessionBus bus{folder.path()};
    std::shared_ptr<login::StartAtLogin> start;
    Observation observation;
    int changes = 0;
};

class StartAtLoginWithPortal : public StartAtLogin {
protected:
    void SetUp() override {
        ASSERT_TRUE(portal.waitUntilOwned(bus));
        make(bus.address());
    }
    void ask(bool on) {
        start->setOn(on);
        ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return portal.requests > 0; }));
    }
    void answer(guint32 code) {
        const int before = changes;
        portal.respond(code);
        ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return changes > before; }));
    }

    BackgroundPortal portal{bus};
};

} // namespace

TEST_F(StartAtLogin, IsOffAtFirst) {
    make(bus.address());
    EXPECT_FALSE(start->isOn());
    EXPECT_FALSE(std::filesystem::exists(entry));
}

TEST_F(StartAtLogin, WithoutAPortalIsAnEntryThatStartsTheProgramWithoutAWindow) {
    for (const std::string& address : {bus.address(), std::string()}) {
        make(address);
        set(true);
        EXPECT_TRUE(start->isOn());
        EXPECT_EQ(written(), "[Desktop Entry]\nType=Application\nName=Kelo\n"
                             "TryExec=/home/ada/kelo/bin/kelo\n"
                             "Exec=\"/home/ada/kelo/bin/kelo\" --background\n"
                             "Icon=app.kelo.Kelo\n");
        set(false);
        EXPECT_FALSE(start->isOn());
        EXPECT_FALSE(std::filesystem::exists(entry));
    }
}

TEST_F(StartAtLogin, IsWhatTheEntrySays) {
    write("[Desktop Entry]\nType=Application\nName=Kelo\nExec=kelo\n");
    make(bus.address());
    EXPECT_TRUE(start->isOn());
    // So do desktops whose settings turn an entry off.
    write("[Desktop Entry]\nType=Application\nName=Kelo\nExec=kelo\nHidden=true\n");
    make(bus.address());
    EXPECT_FALSE(start->isOn());
    set(true);
    EXPECT_TRUE(start->isOn());
}

TEST_F(StartAtLogin, StaysOffWhereTheEntryCannotBeWritten) {
    std::ofstream(folder / "autostart") << "a file where the folder should be";
    make(bus.address());
    set(true);
    EXPECT_FALSE(start->isOn());
}

TEST_F(StartAtLoginWithPortal, AsksItAndIsOnOnceItAgrees) {
    ask(true);
    EXPECT_TRUE(portal.autostart);
    EXPECT_EQ(portal.command, "/home/ada/kelo/bin/kelo;--background;");
    EXPECT_FALSE(start->isOn());
    EXPECT_FALSE(std::filesystem::exists(entry));
    answer(0);
    EXPECT_TRUE(start->isOn());
}

TEST_F(StartAtLoginWithPortal, LeavesAnEntryThatThePortalHasWritten) {
    ask(true);
    const std::string theirs = "[Desktop Entry]\nType=Application\nName=Theirs\nExec=kelo\n";
    write(theirs);
    answer(0);
    EXPECT_EQ(written(), theirs);
}

TEST_F(StartAtLoginWithPortal, StaysOffWhenTheUserRefusesThere) {
    ask(true);
    answer(1);
    EXPECT_FALSE(start->isOn());
    EXPECT_FALSE(std::filesystem::exists(entry));
}

TEST_F(StartAtLoginWithPortal, IsOnByItsOwnEntryWhenThePortalFails) {
    ask(true);
    answer(2);
    EXPECT_TRUE(start->isOn());
}

TEST_F(StartAtLoginWithPortal, TellsItToStop) {
    write("[Desktop Entry]\nType=Application\nName=Kelo\nExec=kelo\n");
    make(bus.address());
    ask(false);
    EXPECT_FALSE(portal.autostart);
    EXPECT_FALSE(start->isOn());
    EXPECT_FALSE(std::filesystem::exists(entry));
}

TEST(EntryText, IsTheSameTextAfterTheDesktopHasReadIt) {
    EXPECT_EQ(login::entryText("/a b/100%/$kelo"), "/a b/100%/$kelo");
    EXPECT_EQ(login::entryText("/d\\e"), "/d\\\\e");
}

TEST(ExecWord, IsTheSameWordAfterTheDesktopHasReadIt) {
    EXPECT_EQ(login::execWord("/opt/kelo"), "\"/opt/kelo\"");
    EXPECT_EQ(login::execWord("/a b/100%/kelo"), "\"/a b/100%%/kelo\"");
    EXPECT_EQ(login::execWord("/$a/\"b\"/`c`/d\\e"),
              "\"/\\\\$a/\\\\\"b\\\\\"/\\\\`c\\\\`/d\\\\\\\\e\"");
}

} // namespace kelo::test
