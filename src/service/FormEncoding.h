#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::service {

using FormFields = std::vector<std::pair<std::string, std::string>>;

/// Encodes the fields like the query of a URL: name=value, joined with "&", in order. Each byte
/// outside the query characters of RFC 3986 becomes "%" and two upper-case hex digits. "&", "=" and
/// "+" inside a name or value are encoded too, because they have a meaning in form data. Empty if
/// there are no fields.
std::optional<std::string> formEncode(const FormFields& fields);

} // namespace kelo::service
