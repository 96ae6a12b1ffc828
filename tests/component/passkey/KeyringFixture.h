#pragma once

#include "SessionBus.h"
#include "component/ScopedMainLoop.h"

#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace kelo {

/// The real keyring daemon on a bus of its own; each use of it is a process of its own.
class KeyringFixture : public testing::Test {
protected:
    std::vector<std::string> environment() const {
        const std::string home = folder.path().string();
        return {"DBUS_SESSION_BUS_ADDRESS=" + bus.address(),
                "HOME=" + home,
                "XDG_DATA_HOME=" + home + "/data",
                "XDG_RUNTIME_DIR=" + home,
                "XDG_CONFIG_HOME=" + home,
                "XDG_CACHE_HOME=" + home};
    }
    void startKeyring(const std::vector<std::string>& options) {
        std::vector<std::string> command = {"gnome-keyring-daemon", "--foreground",
                                            "--components=secrets"};
        command.insert(command.end(), options.begin(), options.end());
        daemon = Child(command, environment());
    }
    void startUnlocked() {
        startKeyring({"--unlock"});
        daemon.write("password");
        daemon.closeInput();
        ASSERT_TRUE(bus.waitForName("org.freedesktop.secrets"));
    }
    void startLocked() {
        startKeyring({});
        ASSERT_TRUE(bus.waitForName("org.freedesktop.secrets"));
    }
    void stopKeyring() {
        daemon.kill();
        ASSERT_TRUE(bus.waitForNoName("org.freedesktop.secrets"));
    }
    /// Wrong use of a library counts as a failure, too.
    std::vector<std::string> probeEnvironment() const {
        auto variables = environment();
        variables.emplace_back("G_DEBUG=fatal-criticals");
        return variables;
    }
    std::string probe(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), KELO_KEYRING_PROBE);
        return Child(arguments, probeEnvironment()).readLine();
    }

    Child userWho(const std::vector<std::string>& does) const {
        std::vector<std::string> command = {KELO_ANSWERING_PROMPTER};
        command.insert(command.end(), does.begin(), does.end());
        Child prompter(command, environment());
        EXPECT_EQ(prompter.readLine(), "ready");
        return prompter;
    }
    /// How many prompts the user has seen.
    static std::string promptsOf(const Child& user) {
        user.closeInput();
        return user.readLine();
    }
    /// The keyring and the prompter agree on a key for what is typed, and in one of some hundred
    /// cases the keyring does not take that key: then the user tries again, as Kelo asks.
    void moveToOwn() {
        std::string outcome = "error: ";
        for (int tries = 0; tries < 5 && outcome.starts_with("error: "); ++tries) {
            const Child user = userWho({"answer", "of its own"});
            outcome = probe({"keep-in-own"});
            EXPECT_EQ(promptsOf(user), "1") << "for the new password";
        }
        ASSERT_EQ(outcome, "moved");
    }

    struct Item {
        std::string secret;
        int created;
    };
    /// Puts a keyring without a password in place that holds these as wrapping keys.
    void writeKeyring(const std::vector<Item>& items) const {
        std::filesystem::create_directories(keyrings);
        std::ofstream(keyrings / "default") << "login";
        std::ofstream text(keyrings / "login.keyring");
        text << "[keyring]\ndisplay-name=login\nctime=1\nmtime=1\n"
                "lock-on-idle=false\nlock-after=false\n";
        int number = 0;
        for (const Item& item : items) {
            const std::string name = std::to_string(++number);
            text << "\n[" << name << "]\nitem-type=0\ndisplay-name=key\nsecret=" << item.secret
                 << "\nmtime=" << item.created << "\nctime=" << item.created << "\n\n[" << name
                 << ":attribute0]\nname=purpose\ntype=string\nvalue=passkeys\n\n[" << name
                 << ":attribute1]\nname=xdg:schema\ntype=string\n"
                 << "value=app.kelo.Kelo.WrappingKey\n";
        }
    }

    ScopedMainLoop loop;
    test::TemporaryFolder folder;
    const std::filesystem::path keyrings = folder.path() / "data" / "keyrings";
    SessionBus bus{folder.path()};
    Child daemon;
};

} // namespace kelo
