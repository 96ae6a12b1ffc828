#pragma once

#include "base/Url.h"

#include <webkit/webkit.h>

#include <string>
#include <vector>

namespace kelo::webkit {

/// The script world of our own: same documents, but globals that code of pages cannot reach.
inline constexpr const char* ownScriptWorld = "kelo";

/// A script that runs before any of a page's own, in the documents it is meant for. The engine runs
/// none in the empty document that a new frame begins with.
struct GuardScript {
    std::string source;
    WebKitUserContentInjectedFrames frames = WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES;
    /// Null: the world of the page's own scripts.
    const char* world = nullptr;
    /// Patterns of addresses; empty for all.
    std::vector<std::string> allowed = {};
};

void addGuardScript(WebKitUserContentManager* manager, const GuardScript& script);

/// The script, made to do nothing outside documents of the origin. It has to run at document start:
/// later a page may have given self.origin another value.
std::string onlyIn(const Url& origin, const std::string& source);
/// The opposite. A sandboxed document is of no origin but its own.
std::string exceptIn(const Url& origin, const std::string& source);

/// The pattern that all addresses of the URL's scheme and host match; the engine's patterns know no
/// ports (one with a port matches nothing). Addresses of about:, data: and blob: never match.
std::string pagesOfHost(const Url& url);

} // namespace kelo::webkit
