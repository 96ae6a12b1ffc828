#pragma once

#include <webkit/webkit.h>

#include <string>

namespace kelo::webkit {

/// Saves every download of the session in the user's downloads folder under a name that is free,
/// and says so in a desktop notification when it is there.
void saveDownloadsOf(WebKitNetworkSession* session);

/// A path in the folder that nothing has yet: "report.pdf", "report (2).pdf", and so on. The
/// suggestion comes from the service: no folders, no hidden files.
std::string freePathFor(const std::string& folder, const std::string& suggestion);

} // namespace kelo::webkit
