#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelo::demo {

/// A request as handlers see it, free of the server library.
struct Request {
    std::string method; ///< HEAD arrives as GET
    std::string path;   ///< decoded, without the query
    std::string query;  ///< still encoded
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers; ///< names in lower case

    /// The first header with that name, given in lower case; empty if there is none.
    std::string_view header(std::string_view name) const;

    /// The values of all cookies of that name: a browser sends one for each path and domain.
    std::vector<std::string> cookies(std::string_view name) const;

    /// Whether Content-Type is this media type, with any parameters.
    bool hasContentType(std::string_view type) const;
};

struct Reply {
    unsigned status = 200;
    std::string contentType = "text/plain; charset=utf-8";
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;

    Reply& with(std::string name, std::string value) {
        headers.emplace_back(std::move(name), std::move(value));
        return *this;
    }
};

} // namespace kelo::demo
