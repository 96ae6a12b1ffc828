#include "demo/http/Replies.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace kelo::demo {

Reply jsonReply(unsigned status, const nlohmann::json& value) {
    return {status, "application/json", value.dump(), {}};
}

Reply refusal(unsigned status, std::string_view reason) {
    return jsonReply(status, {{"reason", reason}});
}

Reply htmlReply(unsigned status, std::string html) {
    return {status, "text/html; charset=utf-8", std::move(html), {}};
}

Reply redirectTo(std::string location) {
    Reply reply;
    reply.status = 303;
    return reply.with("Location", std::move(location));
}

} // namespace kelo::demo
