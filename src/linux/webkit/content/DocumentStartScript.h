#pragma once

#include "base/Url.h"

#include <webkit/webkit.h>

#include <string>
#include <vector>

namespace kelo::webkit {

/// The program's own script world: it shares the documents with the pages, but not the globals.
inline constexpr const char* ownScriptWorld = "kelo";

/// A script that runs before the scripts of a document. The engine does not run it in the initial
/// empty document of a new frame.
struct DocumentStartScript {
    std::string source;
    WebKitUserContentInjectedFrames frames = WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES;
    /// Null for the world of the page's own scripts.
    const char* world = nullptr;
    /// Address patterns; empty for all addresses.
    std::vector<std::string> allowed = {};
};

void addDocumentStartScript(WebKitUserContentManager* manager, const DocumentStartScript& script);

/// Wraps the script so that it runs only in documents of the origin. Valid at document start alone:
/// a page can overwrite self.origin later.
std::string onlyIn(const Url& origin, const std::string& source);
/// Wraps the script so that it runs only in cross-origin documents. A sandboxed document is always
/// cross-origin.
std::string exceptIn(const Url& origin, const std::string& source);

/// A pattern that matches every address with the URL's scheme and host, on any port: the engine's
/// patterns support no ports. Never matches about:, data: and blob: addresses.
std::string pagesOfHost(const Url& url);

} // namespace kelo::webkit
