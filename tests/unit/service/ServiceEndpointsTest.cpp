#include "service/ServiceEndpoints.h"
#include "deployment/Deployment.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

const std::string origin(deployment::serviceOrigin);

TEST(ServiceEndpoints, BaseIsTheOriginWithoutPathOrSlash) {
    EXPECT_EQ(service::serviceBaseURL().absoluteString(), origin);
    EXPECT_EQ(service::serviceBaseURL().scheme(), "https");
    EXPECT_EQ(service::serviceBaseURL().path(), "");
    EXPECT_FALSE(origin.ends_with('/'));
}

TEST(ServiceEndpoints, RelyingPartyIsTheBareHost) {
    EXPECT_EQ(service::relyingPartyIdentifier(), service::serviceBaseURL().host());
}

TEST(ServiceEndpoints, WidgetIsOnePathBelow) {
    EXPECT_EQ(service::widgetURL().absoluteString(), origin + "/widget");
}

TEST(ServiceEndpoints, EveryEndpointIsOneSlashBelowTheBase) {
    const std::pair<std::string_view, const char*> endpoints[] = {
        {service::endpoint::assertionOptions, "/api/account/passkey/auth/options"},
        {service::endpoint::signInCsrf, "/api/auth/csrf"},
        {service::endpoint::credentialsCallback, "/api/auth/callback/credentials"},
        {service::endpoint::registrationCsrf, "/api/csrf"},
        {service::endpoint::registrationOptions, "/api/account/passkey/register/options"},
        {service::endpoint::registrationVerify, "/api/account/passkey/register/verify"},
    };
    for (const auto& [path, expected] : endpoints)
        EXPECT_EQ(service::endpointURL(path).absoluteString(), origin + expected);
}

TEST(ServiceEndpoints, RequestsHaveSixtySecondsAndNothingElseSet) {
    const auto request = service::endpointRequest(service::endpoint::registrationOptions, "POST");
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(request.cachePolicy, platform::CachePolicy::useProtocolCachePolicy);
    EXPECT_TRUE(request.headers.empty());
    EXPECT_FALSE(request.body);
}

TEST(ServiceEndpoints, OnlyStatus200OfTheServiceItselfIsItsSuccess) {
    const auto succeeds = [](std::optional<int> status, bool changedOrigin) {
        return service::isServiceSuccess({Bytes(), status, changedOrigin});
    };
    EXPECT_TRUE(succeeds(200, false));
    EXPECT_FALSE(succeeds(200, true));
    EXPECT_FALSE(succeeds(201, false));
    EXPECT_FALSE(succeeds(302, false));
    EXPECT_FALSE(succeeds(std::nullopt, false));
}

} // namespace
} // namespace kelo
