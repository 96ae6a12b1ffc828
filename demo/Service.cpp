#include "demo/Service.h"

#include "demo/http/Replies.h"

#include <algorithm>
#include <utility>

namespace kelo::demo {
namespace {

void addUnlessGiven(Reply& reply, const char* name, const char* value) {
    const auto given =
        std::ranges::find(reply.headers, name, [](const auto& header) { return header.first; });
    if (given == reply.headers.end())
        reply.with(name, value);
}

void addSafetyHeaders(Reply& reply) {
    addUnlessGiven(reply, "Content-Security-Policy", contentPolicy);
    addUnlessGiven(reply, "X-Frame-Options", "DENY");
    addUnlessGiven(reply, "Cache-Control", "no-store");
    addUnlessGiven(
        reply, "Permissions-Policy",
        "microphone=(self), publickey-credentials-get=(self), camera=(), geolocation=()");
    reply.with("X-Content-Type-Options", "nosniff")
        .with("Referrer-Policy", "same-origin")
        .with("Cross-Origin-Opener-Policy", "same-origin")
        .with("Cross-Origin-Resource-Policy", "same-origin");
}

std::string namesOf(const auto& methods) {
    std::string names;
    for (const auto& [name, handler] : methods)
        names += (names.empty() ? "" : ", ") + (name == "GET" ? "GET, HEAD" : name);
    return names;
}

} // namespace

Service::Service(ServiceContext& context)
    : context(context), pages(context), signIn(context), registration(context) {
    routePages();
    routeApi();
}

void Service::routePages() {
    routes["/"]["GET"] = [this](const Request& request) { return pages.home(request); };
    routes["/login"]["GET"] = [this](const Request& request) { return pages.login(request); };
    routes["/login"]["POST"] = [this](const Request& request) { return pages.signIn(request); };
    routes["/logout"]["POST"] = [this](const Request& request) { return pages.signOut(request); };
    routes["/widget"]["GET"] = [this](const Request& request) { return pages.widget(request); };
    routes["/stranger"]["GET"] = [this](const Request&) { return pages.stranger(); };
    for (const char* name : {"style.css", "login.js", "home.js", "widget.js", "mark.svg"}) {
        routes[std::string("/assets/") + name]["GET"] = [this, name](const Request& request) {
            return pages.asset(request, name);
        };
    }
    routes["/favicon.ico"]["GET"] = routes["/assets/mark.svg"]["GET"];
}

void Service::routeApi() {
    routes["/api/account/passkey/auth/options"]["POST"] = [this](const Request& request) {
        return signIn.options(request);
    };
    routes["/api/auth/csrf"]["GET"] = [this](const Request& request) {
        return signIn.csrf(request);
    };
    routes["/api/auth/callback/credentials"]["POST"] = [this](const Request& request) {
        return signIn.callback(request);
    };
    routes["/api/csrf"]["GET"] = [this](const Request& request) {
        return registration.csrf(request);
    };
    routes["/api/account/passkey/register/options"]["POST"] = [this](const Request& request) {
        return registration.options(request);
    };
    routes["/api/account/passkey/register/verify"]["POST"] = [this](const Request& request) {
        return registration.verify(request);
    };
}

void Service::show(const Gallery& gallery) {
    for (const std::string& name : gallery.names())
        routes["/gallery/" + name]["GET"] = [&gallery, name](const Request&) {
            return gallery.file(name);
        };
}

Reply Service::answer(const Request& request) {
    auto reply = route(request);
    addSafetyHeaders(reply);
    return reply;
}

Reply Service::route(const Request& request) {
    const bool api = request.path.starts_with("/api/");
    const auto methods = routes.find(request.path);
    if (methods == routes.end())
        return api ? refusal(404, "There is no such endpoint") : pages.notFound();
    const auto handler = methods->second.find(request.method);
    if (handler == methods->second.end())
        return refusal(405, "This method is not allowed here")
            .with("Allow", namesOf(methods->second));
    if (request.method != "GET" && isForeign(request))
        return refusal(403, "The request comes from another site");
    if (request.method == "GET" && !api && isOtherHost(request))
        return redirectTo(context.origin + request.path);
    return handler->second(request);
}

/// Browsers name the page a request comes from; programs do not.
bool Service::isForeign(const Request& request) const {
    const auto origin = request.header("origin");
    return !origin.empty() && origin != context.origin;
}

/// Cookies and passkeys belong to one name: a page under another (an address of the same computer)
/// could not use them.
bool Service::isOtherHost(const Request& request) const {
    const auto host = request.header("host");
    return !host.empty() && "https://" + std::string(host) != context.origin;
}

} // namespace kelo::demo
