#pragma once

#include "component/http/HttpFixture.h"

#include "deployment/Deployment.h"

namespace kelo::test {

/// A session that the program signs in or registers with, for a service on another port of the same
/// host: what is asked of the compiled-in origin goes to the test's server. Ports do not tell
/// cookies apart.
class SessionForService final : public platform::HttpSession {
public:
    SessionForService(std::string origin, std::shared_ptr<const http::TrustedAuthority> root,
                      http::SoupHttpSession::Cookies cookies)
        : origin(std::move(origin)), session(cookies, std::move(root)) {}

    Task<platform::HttpReply> data(platform::UrlRequest request) override {
        request.url = atService(request.url);
        return session.data(std::move(request));
    }
    Task<platform::HttpReply> data(Url url) override { return session.data(atService(url)); }
    const platform::HttpCookieStorage* cookieStorage() const override {
        return session.cookieStorage();
    }

private:
    Url atService(const Url& url) const {
        const std::string& text = url.absoluteString();
        EXPECT_TRUE(text.starts_with(deployment::serviceOrigin)) << text;
        return *Url::parse(origin + text.substr(deployment::serviceOrigin.size()));
    }

    std::string origin;
    http::SoupHttpSession session;
};

} // namespace kelo::test
