#pragma once

#include "base/Url.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Lets the service's pages have the files that the user drags onto them: their drop zones get
/// events whose dataTransfer holds the files, as in other browsers. The engine hands files to
/// elements <input type=file> alone, and tells the scripts of pages nothing of them.
///
/// So while files of this computer are dragged over a page of the service, an invisible input lies
/// over it. The page sees events of the program's in place of the engine's, at the elements below,
/// and where it takes none of them a drop does nothing. Inputs of the page and frames of other
/// sites are left to the engine. Drags of anything else, and those that begin in the page, are
/// untouched. The script runs in a world of the program's own.
void offerDroppedFiles(WebKitWebView* view, const Url& service);

} // namespace kelo::webkit
