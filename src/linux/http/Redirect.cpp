#include "linux/http/Redirect.h"

#include "base/Translation.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/http/SoupUri.h"

#include <algorithm>

namespace kelo::http {

using platform::UrlRequest;

namespace {

std::optional<Url> resolved(const Url& base, const std::string& location) {
    const SoupUri from = soupUri(base);
    if (!from)
        return std::nullopt;
    const SoupUri target(g_uri_parse_relative(from.get(), location.c_str(), soupUriFlags, nullptr));
    // Without a host, GLib complains of some addresses that it has parsed itself, such as "x:.///",
    // and finds no text for them.
    if (!target || !g_uri_get_host(target.get()))
        return std::nullopt;
    const gobject::GText text(g_uri_to_string(target.get()));
    return text ? Url::parse(text.get()) : std::nullopt;
}

bool describesBody(const std::string& header) {
    return g_ascii_strncasecmp(header.c_str(), "Content-", 8) == 0;
}

bool becomesGet(const std::string& method, int status) {
    if (status == 303)
        return method != "GET" && method != "HEAD";
    return (status == 301 || status == 302) && method == "POST";
}

} // namespace

std::optional<UrlRequest> redirected(const UrlRequest& request, int status,
                                     const std::optional<std::string>& location) {
    const bool redirects =
        status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
    if (!redirects || !location)
        return std::nullopt;

    const std::optional<Url> target = resolved(request.url, *location);
    if (!target)
        throw Failure(
            FailureKind::badReply,
            translated("%1 sent Kelo on to an address that does not exist. Try again later.",
                       {request.url.host()}),
            "Location: " + *location);
    if (target->scheme() != "https")
        throw Failure(
            FailureKind::insecure,
            translated(
                "%1 sent Kelo on to an address that is not secure, so nothing more was sent.",
                {request.url.host()}),
            "Location: " + *location);

    UrlRequest next = request;
    next.url = *target;
    if (!target->hasSameOrigin(request.url)) {
        next.method = request.method == "HEAD" ? "HEAD" : "GET";
        next.headers.clear();
        next.body.reset();
    } else if (becomesGet(request.method, status)) {
        next.method = "GET";
        next.body.reset();
        std::erase_if(next.headers, [](const auto& header) { return describesBody(header.first); });
    }
    return next;
}

Failure tooManyRedirects(const Url& firstUrl) {
    return Failure(
        FailureKind::badReply,
        translated("%1 sent Kelo from one address to the next without end. Try again later.",
                   {firstUrl.host()}));
}

} // namespace kelo::http
