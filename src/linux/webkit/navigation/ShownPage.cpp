#include "linux/webkit/navigation/ShownPage.h"

#include <string_view>
#include <utility>

namespace kelo::webkit {

namespace {

constexpr std::string_view blobPrefix = "blob:";

std::uint16_t usualPort(const Url& url) {
    return url.scheme() == "http" ? 80 : 443;
}

} // namespace

ShownPage::ShownPage(Url service) : service(std::move(service)) {}

void ShownPage::committed(const char* given) {
    address_ = given ? given : "";
    isBlob = address_.starts_with(blobPrefix);
    // A page can put a document of its own making in its place. That has the origin of its maker.
    url = Url::parse(isBlob ? address_.substr(blobPrefix.size()) : address_);
}

bool ShownPage::isForeign() const {
    return !address_.empty() && !address_.starts_with("about:") && !isServices();
}

bool ShownPage::belongsTo(const Url& other) const {
    return url && url->hasSameOrigin(other);
}

std::string ShownPage::host() const {
    if (!url)
        return "";
    const auto port = url->port();
    return !port || *port == usualPort(*url) ? url->host()
                                             : url->host() + ":" + std::to_string(*port);
}

std::optional<std::string> ShownPage::addressForBrowser() const {
    if (!url || (url->scheme() != "https" && url->scheme() != "http"))
        return std::nullopt;
    return isBlob ? url->scheme() + "://" + host() + "/" : address_;
}

} // namespace kelo::webkit
