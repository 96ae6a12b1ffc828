#pragma once

#include "component/http/MisbehavingServer.h"
#include "component/http/TestAuthority.h"
#include "component/http/TestMainLoop.h"
#include "linux/gobject/WorkerThread.h"
#include "linux/update/SoupTransport.h"
#include "posix/SystemClock.h"
#include "testing/TemporaryFolder.h"
#include "unit/updater/FakeInstaller.h"
#include "unit/updater/FakeNetwork.h"
#include "unit/updater/FakeUserDriver.h"
#include "unit/updater/Feed.h"
#include "unit/updater/Publisher.h"
#include "updater/Updater.h"
#include "updater/UpdaterState.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kelo::test {

/// An updater of version 1.0 with real connections, a real worker and real files, and a scripted
/// server and user.
class DesktopUpdaterFixture : public testing::Test {
protected:
    DesktopUpdaterFixture()
        : server(std::make_unique<MisbehavingServer>(
              authority.issue({{"localhost", hostBehindProxy}}),
              [this](ServerConnection& connection) { serve(connection); })),
          origin(server->origin()) {
        publish(signedRelease("1.1"));
        reply("/kelo.tar.zst", httpReply(archive));
    }
    ~DesktopUpdaterFixture() override {
        made.reset();
        server.reset();
    }

    /// Sets the reply, including its status line.
    void reply(const std::string& path, std::string bytes) {
        behave(path, [bytes = std::move(bytes)](ServerConnection& connection) {
            connection.write(bytes);
        });
    }
    void behave(const std::string& path, MisbehavingServer::Behaviour behaviour) {
        const std::lock_guard lock(mutex);
        behaviours[path] = std::move(behaviour);
    }
    void publish(const std::string& items) { reply("/appcast.xml", httpReply(feedOf(items))); }

    std::string signedRelease(std::string_view version) const {
        return releaseOf(version, archive, publisher.sign(archive));
    }
    std::string releaseOf(std::string_view version, const std::string& bytes,
                          const std::string& signature) const {
        return "<item><sparkle:version>" + std::string(version) +
               "</sparkle:version><enclosure url=\"" + origin + "/kelo.tar.zst\" length=\"" +
               std::to_string(bytes.size()) + "\" sparkle:edSignature=\"" + signature +
               "\"/></item>";
    }

    /// The user asks for a check; waits for the window whose record starts with this text.
    void checkUntil(const std::string& window) {
        if (!made)
            make();
        made->checkForUpdates();
        waitFor(window);
    }
    void waitFor(const std::string& window) {
        ASSERT_TRUE(loop.runUntil([&] { return lastShown().starts_with(window); }))
            << "last shown: " << lastShown() << " " << user.sentence;
    }
    void installUntil(const std::string& window) {
        checkUntil("offer 1.0 -> 1.1");
        ASSERT_TRUE(user.choice);
        std::exchange(user.choice, std::nullopt)->resume(updater::UpdateChoice::install);
        waitFor(window);
    }
    std::string lastShown() const { return user.shown.empty() ? "" : user.shown.back(); }

    /// Waits, because the worker may still be using the file.
    void expectNothingLeft() {
        EXPECT_TRUE(loop.runUntil([this] {
            std::error_code missing;
            return std::filesystem::directory_iterator(folder.path() / "updates", missing) ==
                   std::filesystem::directory_iterator();
        })) << "a download is left";
        EXPECT_TRUE(installer.prepared.empty());
    }

    int requestsFor(std::string_view path) const {
        int count = 0;
        for (const auto& request : server->requests())
            count += request.target == path ? 1 : 0;
        return count;
    }

    void make() {
        made = std::make_unique<updater::Updater>(updater::UpdaterContext{
            updater::UpdaterSettings({{"SUFeedURL", origin + "/appcast.xml"},
                                      {"SUPublicEDKey", publisher.publicKey()},
                                      {"CFBundleVersion", std::string("1.0")}}),
            {"linux", "x86_64", "2.36"},
            folder.path() / "updates",
            transport,
            installer,
            worker,
            clock,
            network,
            std::make_shared<updater::FileStateStore>(folder.path() / "state" / "updater",
                                                      [](const std::string&) {}),
            [this] { return std::make_unique<FakeUserDriver>(user); },
            [](const Url&) {},
            [] { return 0u; },
            [this](const std::string& line) { log.push_back(line); }});
        made->start();
    }

    /// A name of the server that nothing but a proxy can find.
    static constexpr const char* hostBehindProxy = "updates.invalid";

    TestMainLoop loop;
    TestAuthority authority;
    Publisher publisher;
    const std::string archive = std::string(300000, 'k') + "elo";
    TemporaryFolder folder;
    posix::SystemClock clock;
    UserBefore user;
    FakeInstaller installer;
    FakeNetwork network;
    std::vector<std::string> log;
    update::SoupTransport transport{
        std::make_shared<const http::TrustedAuthority>(
            authority.pem(), std::vector<std::string>{"localhost", hostBehindProxy}),
        std::chrono::seconds(1)};
    gobject::WorkerThread worker;
    std::mutex mutex;
    std::map<std::string, MisbehavingServer::Behaviour> behaviours;
    std::unique_ptr<MisbehavingServer> server;
    /// Where the feed and the archive are: the server, by one of its names.
    std::string origin;
    std::unique_ptr<updater::Updater> made;

private:
    void serve(ServerConnection& connection) {
        while (const auto request = connection.read()) {
            MisbehavingServer::Behaviour behaviour;
            {
                const std::lock_guard lock(mutex);
                behaviour = behaviours[request->target];
            }
            if (!behaviour) {
                connection.write(httpReply("", "", "404 Not Found"));
                continue;
            }
            behaviour(connection);
        }
    }
};

} // namespace kelo::test
