#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::service {

using FormFields = std::vector<std::pair<std::string, std::string>>;

/// The fields as the query of a URL writes them: name=value, joined with "&", in their order; every
/// byte outside RFC 3986's query characters as "%" and two upper-case digits. "&", "=" and "+"
/// inside a name or value are encoded too, because a form's reader takes them for its own. Nothing
/// when there is no field.
std::optional<std::string> formEncode(const FormFields& fields);

} // namespace kelo::service
