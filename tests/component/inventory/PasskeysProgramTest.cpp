#include "unit/authenticator/Records.h"

#include "linux/gobject/GObjectPointer.h"
#include "testing/TemporaryFolder.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace kelo::tests {
namespace {

using testing::HasSubstr;

/// The program itself, with a home folder of its own and without a session bus.
class PasskeysProgram : public testing::Test {
protected:
    int run(const std::vector<const char*>& words, const char* typed = "") {
        const auto launcher = gobject::GObjectPointer<GSubprocessLauncher>::adopt(
            g_subprocess_launcher_new(static_cast<GSubprocessFlags>(
                G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                G_SUBPROCESS_FLAGS_STDERR_MERGE)));
        g_subprocess_launcher_setenv(launcher.get(), "XDG_DATA_HOME", folder.path().c_str(), TRUE);
        g_subprocess_launcher_setenv(launcher.get(), "LC_ALL", "C.UTF-8", TRUE);
        g_subprocess_launcher_unsetenv(launcher.get(), "LANGUAGE");
        g_subprocess_launcher_setenv(launcher.get(), "DBUS_SESSION_BUS_ADDRESS", "unix:path=/none",
                                     TRUE);
        for (const auto& [name, value] : environment)
            g_subprocess_launcher_setenv(launcher.get(), name.c_str(), value.c_str(), TRUE);
        std::vector<const char*> command{KELO_PASSKEYS};
        command.insert(command.end(), words.begin(), words.end());
        command.push_back(nullptr);
        const auto process = gobject::GObjectPointer<GSubprocess>::adopt(
            g_subprocess_launcher_spawnv(launcher.get(), command.data(), nullptr));
        char* text = nullptr;
        EXPECT_TRUE(
            g_subprocess_communicate_utf8(process.get(), typed, nullptr, &text, nullptr, nullptr));
        printed = gobject::GText(text).get();
        return g_subprocess_get_exit_status(process.get());
    }

    test::TemporaryFolder folder;
    authenticator::CredentialStore passkeys{folder.path() / "kelo" / "passkeys.sqlite"};
    std::map<std::string, std::string> environment;
    std::string printed;
};

TEST_F(PasskeysProgram, ListsForPeopleAndForPrograms) {
    passkeys.save(record("one", "user"));
    EXPECT_EQ(run({}), 0);
    EXPECT_THAT(printed, HasSubstr("account of user"));
    EXPECT_EQ(run({"--json"}), 0);
    EXPECT_EQ(nlohmann::json::parse(printed)["passkeys"].size(), 1U);
}

TEST_F(PasskeysProgram, DoctorSaysWhatIsMissingHere) {
    EXPECT_EQ(run({"doctor"}), 1);
    EXPECT_THAT(printed, HasSubstr("✗ Keyring: No keyring is running"));
    EXPECT_THAT(printed, HasSubstr("✓ Check of the user:"));
    EXPECT_THAT(printed, HasSubstr("✓ Passkeys: There are 0 passkeys on this computer."));
    EXPECT_EQ(run({"doctor", "--json"}), 1);
    EXPECT_EQ(nlohmann::json::parse(printed)["findings"].size(), 4U);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // they insist on being first
TEST_F(PasskeysProgram, LibraryOfTheChipPrintsNothingBesideTheReport) {
    environment = {{"LD_PRELOAD", KELO_GIVEN_CHIP_LIBRARY},
                   {"KELO_GIVEN_CHIP", "swtpm:path=/none"},
                   {"TSS2_LOG", "all+TRACE"}};
    EXPECT_EQ(run({"doctor", "--json"}), 1);
    const auto findings = nlohmann::json::parse(printed)["findings"];
    EXPECT_THAT(findings.dump(), HasSubstr("security chip (TPM) does not answer"));
}
#endif

TEST_F(PasskeysProgram, DeletesNothingForWhomItCannotVerify) {
    passkeys.save(record("one", "user"));
    EXPECT_EQ(run({"delete", "6f6e65"}, "delete\n"), 1);
    EXPECT_EQ(passkeys.all().size(), 1U);
}

} // namespace
} // namespace kelo::tests
