#pragma once

#include "base/Failure.h"
#include "component/http/MisbehavingServer.h"
#include "component/http/TestAuthority.h"
#include "component/http/TestMainLoop.h"
#include "linux/http/SoupHttpSession.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::test {

/// A session that trusts an authority of the test's own, and servers certified by it.
class HttpFixture : public testing::Test {
protected:
    using Session = http::SoupHttpSession;

    static std::shared_ptr<const http::TrustedAuthority>
    trusting(const TestAuthority& root, std::vector<std::string> hosts = {"localhost"}) {
        return std::make_shared<const http::TrustedAuthority>(root.pem(), std::move(hosts));
    }

    std::unique_ptr<MisbehavingServer> server(MisbehavingServer::Behaviour behaviour) {
        return std::make_unique<MisbehavingServer>(identity, std::move(behaviour));
    }

    platform::HttpReply fetch(platform::UrlRequest request) {
        return loop.run(session.data(std::move(request)));
    }

    /// The failure of the request. A request that succeeds fails the test.
    Failure failureOf(platform::UrlRequest request) {
        try {
            const auto reply = loop.run(session.data(std::move(request)));
            ADD_FAILURE() << "expected a failure, got " << reply.body.size() << " bytes";
        } catch (const Failure& error) {
            return error;
        }
        return {FailureKind::cancelled, "no failure"};
    }

    static platform::UrlRequest get(Url url) { return {std::move(url)}; }

    TestMainLoop loop;
    TestAuthority authority;
    Identity identity = authority.issue();
    Session session{Session::Cookies::none, trusting(authority)};
};

} // namespace kelo::test
