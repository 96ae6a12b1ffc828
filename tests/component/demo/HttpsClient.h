#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <libsoup/soup.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kelo::demo {

struct Response {
    unsigned status = 0;
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers; ///< names in lower case

    std::string header(const std::string& name) const;
    /// The whole Set-Cookie line of a cookie; empty when it is not set.
    std::string setCookie(const std::string& name) const;
    nlohmann::json json() const { return nlohmann::json::parse(body, nullptr, false); }
    std::string reason() const { return json().value("reason", ""); }
};

using Headers = std::vector<std::pair<std::string, std::string>>;

/// A minimal browser: keeps cookies, trusts only the test's own authority, follows no redirect.
class HttpsClient {
public:
    HttpsClient(const std::filesystem::path& authority, std::string origin);

    Response get(const std::string& path, const Headers& headers = {});
    Response post(const std::string& path, const std::string& type = "",
                  const std::string& body = "", const Headers& headers = {});
    Response send(const std::string& method, const std::string& path, const std::string& type,
                  const std::string& body, const Headers& headers = {});

    /// POST of form fields, percent-encoded.
    Response postForm(const std::string& path, const std::map<std::string, std::string>& fields,
                      const Headers& headers = {});

    std::map<std::string, std::string> cookies;
    std::string origin;

private:
    void keepCookies(const Response& response);

    gobject::GObjectPointer<SoupSession> session;
};

} // namespace kelo::demo
