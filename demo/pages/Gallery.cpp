#include "demo/pages/Gallery.h"

#include "demo/base/ServiceError.h"
#include "demo/http/Replies.h"

#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

namespace kelo::demo {

Gallery::Gallery(std::filesystem::path given) : folder(std::move(given)) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        if (entry.is_regular_file())
            names_.push_back(entry.path().filename().string());
    if (error)
        throw ServiceError("The folder of pages cannot be read: " + folder.string() + ": " +
                           error.message());
}

Reply Gallery::file(const std::string& name) const {
    std::ifstream stream(folder / name, std::ios::binary);
    if (!stream)
        return refusal(404, "This page has gone");
    Reply reply;
    reply.contentType =
        name.ends_with(".css") ? "text/css; charset=utf-8" : "text/html; charset=utf-8";
    reply.body.assign(std::istreambuf_iterator<char>(stream), {});
    reply
        .with("Content-Security-Policy",
              "default-src 'self' 'unsafe-inline' data: blob:; frame-ancestors 'none'")
        .with("Permissions-Policy", "microphone=(self), camera=(self)");
    return reply;
}

} // namespace kelo::demo
