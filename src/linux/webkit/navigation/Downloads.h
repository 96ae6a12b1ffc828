#pragma once

#include <webkit/webkit.h>

#include <string>

namespace kelo::webkit {

/// Saves every download of the session in the user's downloads folder, under a name that is not
/// taken, and shows a desktop notification when it has finished or failed.
void saveDownloadsOf(WebKitNetworkSession* session);

/// A path in the folder that does not exist yet: "report.pdf", "report (2).pdf", and so on. The
/// suggested name comes from the server, so folders and leading dots are removed.
std::string freePathFor(const std::string& folder, const std::string& suggestion);

} // namespace kelo::webkit
