#pragma once

#include "base/Url.h"

#include <optional>
#include <string>

namespace kelo::webkit {

/// Whose page a view shows. The engine's address of a view does not say so: it may already be that
/// of a page that is still on its way. An error page counts as a page of the address it stands for.
class ShownPage {
public:
    explicit ShownPage(Url service);

    /// The view shows the document of this address from now on; null for an unknown one.
    void committed(const char* address);

    /// Empty before the first page.
    const std::string& address() const { return address_; }
    bool isServices() const { return belongsTo(service); }
    /// Not the service's, and not empty.
    bool isForeign() const;
    /// Whether the page and the URL have the same origin.
    bool belongsTo(const Url& url) const;

    /// The host of a foreign page as it is spelled in requests, with a port unless that is the
    /// scheme's own: "accounts.example.com", "xn--80ak6aa92e.com", "localhost:8444". Empty for an
    /// address without a host.
    std::string host() const;
    /// What a browser can open: the page's address, or the root of its origin.
    std::optional<std::string> addressForBrowser() const;

    const Url service;

private:
    std::string address_;
    std::optional<Url> url; ///< of the page, or of the page that made a blob:
    bool isBlob = false;
};

/// The address of the document alone, without the place in it.
inline std::string withoutFragment(const std::string& address) {
    return address.substr(0, address.find('#'));
}

} // namespace kelo::webkit
