#pragma once

#include "demo/http/Http.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <string_view>

namespace kelo::demo {

Reply jsonReply(unsigned status, const nlohmann::json& value);

/// A JSON response with the reason in English why the request was refused: {"reason": ...}.
Reply refusal(unsigned status, std::string_view reason);

Reply htmlReply(unsigned status, std::string html);

/// A redirect that a browser follows with GET, whatever the method was.
Reply redirectTo(std::string location);

} // namespace kelo::demo
