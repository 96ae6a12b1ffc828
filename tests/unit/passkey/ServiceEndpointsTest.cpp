#include "passkey/ServiceEndpoints.h"
#include "deployment/Deployment.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

const std::string origin(deployment::serviceOrigin);

TEST(ServiceEndpoints, BaseIsTheOriginWithoutPathOrSlash) {
    EXPECT_EQ(serviceBaseURL().absoluteString(), origin);
    EXPECT_EQ(serviceBaseURL().scheme(), "https");
    EXPECT_EQ(serviceBaseURL().path(), "");
    EXPECT_FALSE(origin.ends_with('/'));
}

TEST(ServiceEndpoints, RelyingPartyIsTheBareHost) {
    EXPECT_EQ(relyingPartyIdentifier(), serviceBaseURL().host());
}

TEST(ServiceEndpoints, WidgetIsOnePathBelow) {
    EXPECT_EQ(widgetURL().absoluteString(), origin + "/widget");
}

TEST(ServiceEndpoints, EveryEndpointIsOneSlashBelowTheBase) {
    const std::pair<std::string_view, const char*> endpoints[] = {
        {endpoint::assertionOptions, "/api/account/passkey/auth/options"},
        {endpoint::signInCsrf, "/api/auth/csrf"},
        {endpoint::credentialsCallback, "/api/auth/callback/credentials"},
        {endpoint::registrationCsrf, "/api/csrf"},
        {endpoint::registrationOptions, "/api/account/passkey/register/options"},
        {endpoint::registrationVerify, "/api/account/passkey/register/verify"},
    };
    for (const auto& [path, expected] : endpoints)
        EXPECT_EQ(endpointURL(path).absoluteString(), origin + expected);
}

TEST(ServiceEndpoints, RequestsHaveSixtySecondsAndNothingElseSet) {
    const auto request = endpointRequest(endpoint::registrationOptions, "POST");
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(request.cachePolicy, platform::CachePolicy::useProtocolCachePolicy);
    EXPECT_TRUE(request.headers.empty());
    EXPECT_FALSE(request.body);
}

} // namespace
} // namespace kelo
