#pragma once

#include "fakes/FakeMainLoop.h"
#include "testing/TemporaryFolder.h"
#include "unit/updater/FakeInstaller.h"
#include "unit/updater/FakeNetwork.h"
#include "unit/updater/FakeTransport.h"
#include "unit/updater/FakeUserDriver.h"
#include "unit/updater/Feed.h"
#include "unit/updater/ImmediateWorker.h"
#include "unit/updater/Publisher.h"
#include "updater/Updater.h"
#include "updater/error/UpdateError.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kelo::test {

struct TestClock final : Clock {
    std::chrono::system_clock::time_point now() const override { return time; }
    std::chrono::sys_seconds time = std::chrono::sys_days(std::chrono::year(2026) / 11 / 21);
};

/// Keeps the state in memory, across updaters.
struct MemoryStateStore final : updater::UpdaterStateStore {
    updater::UpdaterState load() override { return state; }
    void save(const updater::UpdaterState& changed) override { state = changed; }
    updater::UpdaterState state;
};

/// Version 1.0 is installed, the publisher has 1.1, and the updater works with fakes.
class UpdaterFixture : public testing::Test {
protected:
    UpdaterFixture() : installation(loop) {
        dictionary = {{"SUFeedURL", feedAddress},
                      {"SUPublicEDKey", publisher.publicKey()},
                      {"CFBundleName", std::string("Kelo")},
                      {"CFBundleVersion", std::string("1.0")}};
        transport.failure = std::make_exception_ptr(
            updater::UpdateError(updater::UpdateErrorKind::transport, "No such address."));
        transport.replies[archiveAddress] = bytesOf(archive);
        publish(signedRelease("1.1"));
    }

    void publish(const std::string& items) {
        transport.replies[feedAddress] = bytesOf(feedOf(items));
    }

    std::string signedRelease(std::string_view version, std::string_view more = "") const {
        return release(version, more,
                       "length=\"" + std::to_string(archive.size()) + "\" sparkle:edSignature=\"" +
                           publisher.sign(archive) + "\"");
    }

    /// Makes and starts a new updater, as a start of the program does.
    updater::Updater& start() {
        made.reset();
        made = std::make_unique<updater::Updater>(updater::UpdaterContext{
            updater::UpdaterSettings(dictionary),
            {"linux", "x86_64", "2.36"},
            folder.path() / "updates",
            transport,
            installer,
            worker,
            clock,
            network,
            store,
            [this] { return std::make_unique<FakeUserDriver>(user); },
            [this](const Url& url) { opened.push_back(url.absoluteString()); },
            [] { return 3u; },
            [this](const std::string& line) { log.push_back(line); }});
        made->start();
        return *made;
    }

    /// The same where checks are automatic.
    void startAutomatic() {
        dictionary["SUEnableAutomaticChecks"] = true;
        start();
        pass(std::chrono::seconds(1));
    }

    std::size_t feedRequests() const {
        return static_cast<std::size_t>(
            std::count(transport.requests.begin(), transport.requests.end(), feedAddress));
    }

    /// The user asks for a check; makes an updater if there is none.
    void check() {
        if (!made)
            start();
        made->checkForUpdates();
        loop.runUntilIdle();
    }

    template <typename T, typename Value>
    void answer(std::optional<CheckedContinuation<T>>& question, Value value) {
        ASSERT_TRUE(question) << "nothing was asked; last shown: " << lastShown();
        std::exchange(question, std::nullopt)->resume(value);
        loop.runUntilIdle();
    }
    void choose(updater::UpdateChoice choice) { answer(user.choice, choice); }
    void chooseRelaunch(updater::RelaunchChoice choice) { answer(user.relaunch, choice); }
    void acknowledge() { answer(user.acknowledge, std::monostate()); }
    void cancel() {
        ASSERT_TRUE(user.cancel);
        user.cancel();
        loop.runUntilIdle();
    }

    std::string lastShown() const { return user.shown.empty() ? "" : user.shown.back(); }
    bool everShown(std::string_view what) const {
        return std::find(user.shown.begin(), user.shown.end(), what) != user.shown.end();
    }

    /// The content of the folder for downloads.
    std::vector<std::filesystem::path> leftovers() const {
        std::vector<std::filesystem::path> found;
        std::error_code missing;
        for (const auto& entry :
             std::filesystem::directory_iterator(folder.path() / "updates", missing))
            found.push_back(entry.path());
        return found;
    }

    /// Advances the clock and the timers.
    void pass(std::chrono::seconds span) {
        constexpr std::chrono::seconds step = std::chrono::minutes(30);
        while (span > std::chrono::seconds(0)) {
            const auto part = std::min(span, step);
            clock.time += part;
            loop.advance(part);
            span -= part;
        }
        loop.runUntilIdle();
    }

    const std::string feedAddress = "https://updates.example.com/appcast.xml";
    const std::string archiveAddress = "https://updates.example.com/kelo.tar.zst";
    const std::string archive = "the bytes of a new version";

    fakes::FakeMainLoop loop;
    MainLoop::Installation installation;
    TemporaryFolder folder;
    TestClock clock;
    ImmediateWorker worker;
    Publisher publisher;
    FakeTransport transport;
    FakeInstaller installer;
    FakeNetwork network;
    UserBefore user;
    std::shared_ptr<MemoryStateStore> store = std::make_shared<MemoryStateStore>();
    platform::InformationDictionary dictionary;
    std::vector<std::string> opened;
    std::vector<std::string> log;
    std::unique_ptr<updater::Updater> made;
};

} // namespace kelo::test
