#include "passkey/ServiceEndpoints.h"

#include "deployment/Deployment.h"
#include "platform/Invariant.h"

namespace kelo {

namespace {

platform::Url compiledIn(std::string_view text) {
    auto url = platform::Url::parse(text);
    if (!url)
        platform::invariantBroken("the compiled-in service addresses are URLs");
    return *url;
}

} // namespace

const platform::Url& serviceBaseURL() {
    static const platform::Url url = compiledIn(deployment::serviceOrigin);
    return url;
}

std::string_view relyingPartyIdentifier() {
    return deployment::relyingPartyIdentifier;
}

const platform::Url& widgetURL() {
    static const platform::Url url = compiledIn(deployment::widgetUrl);
    return url;
}

platform::Url endpointURL(std::string_view path) {
    return serviceBaseURL().appendingPathComponent(path);
}

platform::UrlRequest endpointRequest(std::string_view path, std::string_view method) {
    platform::UrlRequest request{endpointURL(path)};
    request.method = method;
    return request;
}

} // namespace kelo
