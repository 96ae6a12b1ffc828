#pragma once

#include "base/Failure.h"
#include "base/async/Spawn.h"
#include "fakes/FakeAlerts.h"
#include "fakes/FakeApplication.h"
#include "fakes/FakeAuthorization.h"
#include "fakes/FakeBundle.h"
#include "fakes/FakeEventMonitors.h"
#include "fakes/FakeFileSystem.h"
#include "fakes/FakeHttpSession.h"
#include "fakes/FakeMainLoop.h"
#include "fakes/FakePanel.h"
#include "fakes/FakeUpdater.h"
#include "fakes/FakeUserSession.h"
#include "fakes/FakeWebView.h"
#include "platform/Desktop.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::fakes {

struct FakeClock final : Clock {
    std::chrono::system_clock::time_point now() const override { return time; }
    std::chrono::system_clock::time_point time{};
};

/// Installs all fakes as the current desktop. The destructor restores the former one and drops
/// flows that are still suspended.
class ScopedTestDesktop final : public platform::Desktop {
public:
    ScopedTestDesktop() : loopInstallation(loop), desktopInstallation(*this) {}
    ~ScopedTestDesktop() override { dropSpawnedTasks(); }
    ScopedTestDesktop(const ScopedTestDesktop&) = delete;
    ScopedTestDesktop& operator=(const ScopedTestDesktop&) = delete;

    FakeApplication& application() override { return application_; }
    FakeAlerts& alerts() override { return alerts_; }
    FakeClock& clock() override { return clock_; }
    FakeFileSystem& fileSystem() override { return fileSystem_; }

    std::unique_ptr<platform::HttpSession> makeEphemeralHttpSession() override {
        made.emplace_back("session");
        if (makeSession)
            return makeSession();
        auto session = std::make_unique<FakeHttpSession>();
        ephemeralSessions.push_back(session.get());
        return session;
    }
    platform::HttpSession& sharedHttpSession() override {
        if (realSharedSession)
            return *realSharedSession;
        return sharedSession;
    }

    std::shared_ptr<platform::EmbeddedWebView>
    makeWebView(platform::Rectangle frame, platform::WebViewConfiguration configuration) override {
        made.emplace_back("web view");
        webViews.push_back(std::make_shared<FakeWebView>(frame, std::move(configuration)));
        return webViews.back();
    }
    std::shared_ptr<platform::AuthorizationController>
    makeAuthorizationController(std::vector<platform::AuthorizationRequest> requests) override {
        controllers.push_back(std::make_shared<FakeAuthorizationController>(std::move(requests)));
        return controllers.back();
    }
    void reportCredential(platform::CredentialReport report) override {
        credentialReports.push_back(std::move(report));
    }

    FakeEventMonitors& eventMonitors() override { return monitors; }
    FakeUserSession& userSession() override {
        isSessionFollowed = true;
        return session;
    }
    std::shared_ptr<platform::Panel> makePanel(platform::PanelDescription description) override {
        made.emplace_back("panel");
        panels.push_back(std::make_shared<FakePanel>(description));
        return panels.back();
    }
    std::optional<platform::Screen> mainScreen() override { return screen; }

    FakeBundle& mainBundle() override { return bundle; }
    std::unique_ptr<platform::StandardUpdaterController> makeStandardUpdaterController() override {
        made.emplace_back("updater");
        return std::make_unique<FakeUpdater>(updateChecks);
    }

    FakeMainLoop loop;
    /// What was asked for, in order.
    std::vector<std::string> made;
    std::vector<FakeHttpSession*> ephemeralSessions;
    /// Replaces the fake ephemeral session.
    std::function<std::unique_ptr<platform::HttpSession>()> makeSession;
    FakeHttpSession sharedSession;
    /// Replaces the fake shared session.
    std::unique_ptr<platform::HttpSession> realSharedSession;
    std::vector<std::shared_ptr<FakeWebView>> webViews;
    std::vector<std::shared_ptr<FakeAuthorizationController>> controllers;
    std::vector<platform::CredentialReport> credentialReports;
    FakeEventMonitors monitors;
    FakeUserSession session;
    bool isSessionFollowed = false;
    FakeBundle bundle;
    int updateChecks = 0;
    std::vector<std::shared_ptr<FakePanel>> panels;
    std::optional<platform::Screen> screen = platform::Screen{{0, 25, 1440, 875}};

private:
    MainLoop::Installation loopInstallation;
    platform::Desktop::Installation desktopInstallation;
    FakeApplication application_;
    FakeAlerts alerts_;
    FakeClock clock_;
    FakeFileSystem fileSystem_;
};

/// The outcome of a flow that a test started.
template <typename T>
struct FlowResult {
    std::optional<T> value;
    std::exception_ptr error;
    bool ended() const { return value || error; }
    std::string errorText() const { return error ? localizedDescription(error) : std::string(); }
    template <typename Error>
    const Error* errorAs() const {
        try {
            if (error)
                std::rethrow_exception(error);
        } catch (const Error& known) {
            return &known;
        } catch (...) {
        }
        return nullptr;
    }
};

namespace detail {

template <typename T>
Task<void> follow(Task<T> task, std::shared_ptr<FlowResult<T>> result) {
    try {
        result->value = co_await task;
    } catch (...) {
        result->error = std::current_exception();
    }
}

inline Task<bool> toTrue(Task<void> task) {
    co_await task;
    co_return true;
}

} // namespace detail

/// Starts a flow. It makes progress only while the loop runs.
template <typename T>
std::shared_ptr<FlowResult<T>> start(Task<T> task) {
    auto result = std::make_shared<FlowResult<T>>();
    spawn(detail::follow(std::move(task), result));
    return result;
}

inline std::shared_ptr<FlowResult<bool>> start(Task<void> task) {
    return start(detail::toTrue(std::move(task)));
}

} // namespace kelo::fakes
