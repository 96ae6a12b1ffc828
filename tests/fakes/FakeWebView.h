#pragma once

#include "base/async/Continuation.h"
#include "platform/EmbeddedWebView.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelo::fakes {

/// A web view without an engine. It records all calls, and a load finishes when the test says so.
class FakeWebView : public platform::EmbeddedWebView, public platform::CookieStore {
public:
    FakeWebView(platform::Rectangle frame, platform::WebViewConfiguration configuration)
        : frame(frame), configuration(std::move(configuration)) {}

    void load(platform::UrlRequest request) override {
        calls.push_back("load " + request.url.absoluteString());
        loads.push_back(std::move(request));
    }
    std::optional<Url> url() const override { return shown; }
    void setNavigationDelegate(std::weak_ptr<platform::NavigationDelegate> delegate) override {
        calls.push_back("setNavigationDelegate");
        navigationDelegate = std::move(delegate);
    }
    void
    setUserInterfaceDelegate(std::weak_ptr<platform::UserInterfaceDelegate> delegate) override {
        calls.push_back("setUserInterfaceDelegate");
        interfaceDelegate = std::move(delegate);
    }
    void setAllowsBackForwardNavigationGestures(bool allowed) override {
        calls.push_back(allowed ? "allow gestures" : "forbid gestures");
    }
    void setAllowsMediaCapture(bool allowed) override {
        calls.push_back(allowed ? "allow capture" : "forbid capture");
        allowsMediaCapture = allowed;
    }
    platform::CookieStore& cookieStore() override { return *this; }

    Task<void> setCookie(platform::HttpCookie cookie) override {
        calls.push_back("set " + cookie.name);
        co_await withCheckedContinuation<void>([&](CheckedContinuation<void> continuation) {
            if (holdsCookieCompletions)
                pendingCookie = continuation;
            else
                continuation.resume();
        });
        cookies.push_back(std::move(cookie));
    }
    Task<std::vector<platform::HttpCookie>> getAllCookies() override {
        calls.push_back("get all cookies");
        co_return cookies;
    }

    /// The page at the URL has finished loading.
    void finishNavigation(const char* text) {
        shown = text ? Url::parse(text) : std::nullopt;
        if (const auto delegate = navigationDelegate.lock())
            delegate->didFinishNavigation(*this);
    }

    /// A page of the service posts to the handler of that name, if there is one.
    void post(const std::string& name, platform::ScriptValue body) {
        for (const auto& registration : configuration.scriptMessageHandlers)
            if (registration.name == name)
                registration.handler->didReceiveScriptMessage(*this, {name, body});
    }
    /// A page asks for a device. The decision, or empty while there is none.
    std::optional<platform::PermissionDecision> requestMedia(const std::string& host,
                                                             platform::MediaCaptureType type) {
        std::optional<platform::PermissionDecision> decision;
        if (const auto delegate = interfaceDelegate.lock())
            delegate->requestMediaCapturePermission(*this, {"https", host, 0}, type,
                                                    [&](auto made) { decision = made; });
        return decision;
    }

    const platform::Rectangle frame;
    const platform::WebViewConfiguration configuration;
    std::vector<std::string> calls;
    std::vector<platform::UrlRequest> loads;
    std::vector<platform::HttpCookie> cookies;
    std::weak_ptr<platform::NavigationDelegate> navigationDelegate;
    std::weak_ptr<platform::UserInterfaceDelegate> interfaceDelegate;
    std::optional<Url> shown;
    bool allowsMediaCapture = true;
    bool holdsCookieCompletions = false;
    std::optional<CheckedContinuation<void>> pendingCookie;
};

} // namespace kelo::fakes
