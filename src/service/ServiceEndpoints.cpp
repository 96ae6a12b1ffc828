#include "service/ServiceEndpoints.h"

#include "base/Invariant.h"
#include "deployment/Deployment.h"

namespace kelo::service {

namespace {

Url compiledIn(std::string_view text) {
    auto url = Url::parse(text);
    if (!url)
        invariantBroken("the compiled-in service addresses are URLs");
    return *url;
}

} // namespace

const Url& serviceBaseURL() {
    static const Url url = compiledIn(deployment::serviceOrigin);
    return url;
}

std::string_view relyingPartyIdentifier() {
    return deployment::relyingPartyIdentifier;
}

const Url& widgetURL() {
    static const Url url = compiledIn(deployment::widgetUrl);
    return url;
}

Url endpointURL(std::string_view path) {
    return serviceBaseURL().appendingPathComponent(path);
}

platform::UrlRequest endpointRequest(std::string_view path, std::string_view method) {
    platform::UrlRequest request{endpointURL(path)};
    request.method = method;
    return request;
}

bool isServiceSuccess(const platform::HttpReply& reply) {
    return reply.status == 200 && !reply.changedOrigin;
}

} // namespace kelo::service
