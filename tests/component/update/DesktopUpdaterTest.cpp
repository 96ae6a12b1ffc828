#include "linux/update/DesktopUpdater.h"

#include "component/LogReader.h"
#include "component/http/MisbehavingServer.h"
#include "component/http/TestMainLoop.h"
#include "deployment/TrustedAuthority.h"
#include "testing/TemporaryFolder.h"
#include "unit/updater/FakeUserDriver.h"
#include "unit/updater/Feed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <glib.h>
#include <gnu/libc-version.h>
#include <sys/utsname.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelo {

namespace {

const test::TestAuthority& testAuthority() {
    static const test::TestAuthority authority;
    return authority;
}

const std::string& authorityText() {
    static const std::string text = testAuthority().pem();
    return text;
}

} // namespace

// Replaces the authority that the build names, so that this program trusts the test's server.
const std::string_view deployment::trustedAuthorityPem = authorityText();

namespace test {
namespace {

using testing::HasSubstr;
using Texts = std::vector<std::string>;

/// GLib reads the environment once, so all tests share these folders.
const std::filesystem::path& home() {
    static const TemporaryFolder folder;
    return folder.path();
}

class Home : public testing::Environment {
public:
    void SetUp() override {
        ::setenv("XDG_STATE_HOME", (home() / "state").c_str(), 1);
        ::setenv("XDG_CACHE_HOME", (home() / "cache").c_str(), 1);
    }
};
const testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(std::make_unique<Home>().release());

struct TestBundle final : platform::Bundle {
    std::optional<platform::InformationDictionary> infoDictionary() override { return dictionary; }
    std::optional<platform::InformationDictionary> dictionary;
};

std::string architecture() {
    utsname names{};
    uname(&names);
    return names.machine;
}

/// The updater as the program makes it, on this computer and with this user's folders. The running
/// copy is a test program that cannot be updated, so an update only opens a page.
struct DesktopUpdater : testing::Test {
    DesktopUpdater() { bundle.dictionary = settings(); }
    ~DesktopUpdater() override {
        made.reset();
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(home(), none))
            std::filesystem::remove_all(entry.path(), none);
    }

    platform::InformationDictionary settings() const {
        return {{"SUFeedURL", server.origin() + "/appcast.xml"},
                {"CFBundleVersion", std::string("1.0")},
                {"SUEnableAutomaticChecks", false}};
    }
    void make() {
        made = update::makeStandardUpdaterController(
            bundle, [this] { return std::make_unique<FakeUserDriver>(user); },
            [this](const std::string& address) { opened.push_back(address); },
            [this] { ++terminations; });
    }
    std::string lastShown() const { return user.shown.empty() ? "" : user.shown.back(); }
    /// The user asks for a check; waits for the window whose record starts with this text.
    void checkUntil(const std::string& window) {
        if (!made)
            make();
        made->checkForUpdates();
        ASSERT_TRUE(loop.runUntil([&] { return lastShown().starts_with(window); }))
            << "last shown: " << lastShown() << " " << user.sentence;
    }
    void close() {
        std::exchange(user.acknowledge, std::nullopt)->resume();
        ASSERT_TRUE(loop.runUntil([&] { return !user.open; }));
    }
    static std::filesystem::path stateFile() { return home() / "state" / "kelo" / "updater"; }

    TestMainLoop loop;
    std::string feed = feedOf("");
    MisbehavingServer server{
        testAuthority().issue({{"localhost", "feed.localhost"}}),
        MisbehavingServer::answering([this](const WireRequest&) { return httpReply(feed); })};
    TestBundle bundle;
    UserBefore user;
    Texts opened;
    int terminations = 0;
    std::unique_ptr<platform::StandardUpdaterController> made;
};

TEST_F(DesktopUpdater, ChecksByItselfFromItsMakingWhereTheBundleWantsIt) {
    (*bundle.dictionary)["SUEnableAutomaticChecks"] = true;
    make();
    EXPECT_TRUE(loop.runUntil([&] { return server.requests().size() == 1; }));
    EXPECT_EQ(server.requests().at(0).target, "/appcast.xml");
    EXPECT_TRUE(loop.runUntil([] { return std::filesystem::exists(stateFile()); }));
    EXPECT_EQ(user.shown, Texts{}) << "nothing is new, so nobody is told";
}

TEST_F(DesktopUpdater, TrustsTheBuildsAuthorityForTheHostOfTheFeed) {
    (*bundle.dictionary)["SUFeedURL"] =
        "https://feed.localhost:" + std::to_string(server.port()) + "/appcast.xml";
    checkUntil("message");
    EXPECT_EQ(server.requests().at(0).header("host"),
              "feed.localhost:" + std::to_string(server.port()));
}

TEST_F(DesktopUpdater, ChecksAtTheUsersWordAloneWhereTheBundleDoesNot) {
    make();
    checkUntil("message");
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(DesktopUpdater, WithoutSettingsSaysSoAndAsksNobody) {
    bundle.dictionary = std::nullopt;
    checkUntil("message");
    EXPECT_EQ(server.connectionCount(), 0);
    EXPECT_EQ(terminations, 0);
}

TEST_F(DesktopUpdater, OpensThePageOfAnUpdateThatItCannotInstall) {
    feed = feedOf(release("1.1", "<link>https://downloads.example.com/kelo</link>"));
    checkUntil("offer 1.0 -> 1.1");
    EXPECT_TRUE(user.offer->informationalOnly);
    user.choice->resume(updater::UpdateChoice::install);
    ASSERT_TRUE(loop.runUntil([&] { return !opened.empty(); }));
    EXPECT_EQ(opened, Texts{"https://downloads.example.com/kelo"});
}

TEST_F(DesktopUpdater, OffersWhatThisProcessorAndThisSystemCanRun) {
    const std::string processor =
        "<sparkle:hardwareRequirements>" + architecture() + "</sparkle:hardwareRequirements>";
    const std::string system = std::string("<sparkle:minimumSystemVersion>") +
                               gnu_get_libc_version() + "</sparkle:minimumSystemVersion>";
    feed =
        feedOf(release("1.1", processor + system, "sparkle:os=\"linux-" + architecture() + "\""));
    checkUntil("offer 1.0 -> 1.1");
}

TEST_F(DesktopUpdater, DoesNotOfferWhatNeedsAnotherProcessor) {
    feed = feedOf(
        release("1.1", "<sparkle:hardwareRequirements>sparc</sparkle:hardwareRequirements>"));
    checkUntil("message");
}

TEST_F(DesktopUpdater, DoesNotOfferWhatNeedsANewerSystem) {
    feed = feedOf(release("1.1", "<sparkle:minimumSystemVersion>99</sparkle:minimumSystemVersion>",
                          "sparkle:os=\"linux\""));
    checkUntil("message");
}

TEST_F(DesktopUpdater, RemembersWhatItDidInTheUsersStateFolder) {
    checkUntil("message");
    close();
    ASSERT_TRUE(loop.runUntil([] { return std::filesystem::exists(stateFile()); }));
    const auto rights = std::filesystem::status(stateFile()).permissions();
    EXPECT_EQ(rights & std::filesystem::perms::all,
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    // A scheduled check does not offer a skipped version again.
    feed = feedOf(release("1.1", "<link>https://downloads.example.com/kelo</link>"));
    checkUntil("offer 1.0 -> 1.1");
    user.choice->resume(updater::UpdateChoice::skipThisVersion);
    ASSERT_TRUE(loop.runUntil([&] { return !user.open; }));
    std::ifstream file(stateFile());
    const std::string state{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(state, HasSubstr("1.1"));
}

TEST_F(DesktopUpdater, RemovesWhatAFormerRunHasLeftInTheCacheFolder) {
    const auto left = home() / "cache" / "kelo" / "updates" / "download-abcdef";
    std::filesystem::create_directories(left);
    make();
    EXPECT_TRUE(loop.runUntil([&] { return !std::filesystem::exists(left); }));
}

TEST_F(DesktopUpdater, CauseOfAFailureGoesToTheLog) {
    const LogReader log;
    feed = "no feed";
    checkUntil("failure");
    EXPECT_THAT(log.texts(), testing::Contains(HasSubstr("not well-formed XML")))
        << testing::PrintToString(log.texts());
    EXPECT_THAT(user.sentence, testing::Not(HasSubstr("not well-formed XML")));
}

} // namespace
} // namespace test
} // namespace kelo
