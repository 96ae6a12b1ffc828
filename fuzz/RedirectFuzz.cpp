#include "FuzzInput.h"
#include "GLibComplaints.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/http/LoggedAddress.h"
#include "linux/http/Redirect.h"
#include "linux/http/SoupUri.h"

#include <charconv>
#include <string>

// Where a server sends a request on to. First line: the address of the request. Second line: the
// method and the status. Rest: the Location.

using namespace kelo;
using fuzz::require;
using platform::UrlRequest;

namespace {

constexpr std::string_view usualAddress = "https://service.example:8443/api/start?x=1";

std::string lowered(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char c) { return g_ascii_tolower(c); });
    return result;
}

/// Where a request really goes: the HTTP library reads the address itself.
struct Destination {
    std::string host;
    int port = 0;
    friend bool operator==(const Destination&, const Destination&) = default;
};

std::optional<Destination> destinationOf(const Url& url) {
    const http::SoupUri uri = http::soupUri(url);
    if (!uri || !g_uri_get_host(uri.get()))
        return std::nullopt;
    constexpr int httpsPort = 443;
    const int port = g_uri_get_port(uri.get());
    return Destination{lowered(g_uri_get_host(uri.get())), port < 0 ? httpsPort : port};
}

/// How our own class reads it. The library decodes what is escaped in the host.
Destination readDestinationOf(const Url& url) {
    std::string_view host = url.host();
    if (host.starts_with('[') && host.ends_with(']'))
        host = host.substr(1, host.size() - 2);
    const gobject::GText decoded(
        g_uri_unescape_segment(host.data(), host.data() + host.size(), nullptr));
    return {lowered(decoded ? decoded.get() : ""), url.port().value_or(0)};
}

UrlRequest requestFrom(fuzz::FuzzInput& input) {
    auto url = Url::parse(input.takeLine());
    if (!url || url->scheme() != "https" || !destinationOf(*url))
        url = Url::parse(usualAddress);
    UrlRequest request{*url};
    request.headers = {{"Cookie", "secret"}, {"content-type", "text/plain"}, {"X-Token", "secret"}};
    return request;
}

void examine(const UrlRequest& request, const UrlRequest& next, bool mayBecomeGet) {
    require(next.url.scheme() == "https");
    require(Url::parse(next.url.absoluteString()) == next.url);
    const auto destination = destinationOf(next.url);
    require(destination && *destination == readDestinationOf(next.url));
    require(next.timeout == request.timeout);
    const bool keepsHeaders = !next.headers.empty();
    if (keepsHeaders)
        require(*destination == destinationOf(request.url));
    else
        require(next.method == (request.method == "HEAD" ? "HEAD" : "GET") && !next.body);
    if (keepsHeaders && next.method == request.method)
        require(next.headers == request.headers &&
                next.body.has_value() == request.body.has_value());
    if (next.method != request.method)
        require(next.method == "GET" && !next.body && (mayBecomeGet || !keepsHeaders));
    for (const auto& [name, value] : next.headers)
        require(next.method == request.method || !lowered(name).starts_with("content-"));
}

void examineLogged(const std::string& location) {
    const std::string logged = http::loggedAddress(location.c_str());
    require(!logged.empty());
    require(logged.find_first_of("?#") == std::string::npos);
    require(std::ranges::none_of(logged, [](unsigned char c) { return c < 0x20 || c == 0x7f; }));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::failOnComplaints();
    fuzz::FuzzInput input(data, size);
    UrlRequest request = requestFrom(input);
    request.method = input.takeUntil(' ');
    if (request.method == "POST" || request.method == "PUT")
        request.body = platform::RequestBody(bytesOf("secret"));
    const std::string_view digits = input.takeLine();
    int status = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), status);
    const std::string location(input.rest());
    examineLogged(location);
    require(!http::redirected(request, status, std::nullopt));
    try {
        const auto next = http::redirected(request, status, location);
        require(!next || (status >= 301 && status <= 308 && status != 304));
        if (next)
            examine(request, *next, status <= 303);
    } catch (const Failure& refused) {
        require(refused.kind() == FailureKind::badReply || refused.kind() == FailureKind::insecure);
    }
    return 0;
}
