#pragma once

#include <string>

namespace kelo::http {

/// The scheme, host, port and path of an address, for the log. Leaves out the user, the query and
/// the fragment, because they may contain a password or a code that signs somebody in. For null or
/// for a text that is no address, a few words that say so.
std::string loggedAddress(const char* address);

} // namespace kelo::http
