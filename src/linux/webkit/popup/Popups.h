#pragma once

#include "base/Url.h"
#include "linux/webkit/dialogs/ScriptDialogs.h"
#include "linux/webkit/navigation/ExternalLinks.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

/// What the windows have from the view of their opener.
struct PopupContext {
    Url service;
    ExternalOpener openExternally;
    DialogServices dialogs;
};

/// Gives the pages of a view window.open(): the page appears in a window of its own, whose title is
/// the host that it comes from. Opener and page can talk to each other. Escape, if the page does
/// not take it, and window.close() end the window; so does the end of the view. A page that wants
/// to be asked before it is left is asked when the user closes its window.
///
/// Only for a gesture of the user. A page of another site that is opened without a size or a place
/// for its window goes to the browser instead. What holds for navigations and downloads in the view
/// holds here, too; the page gets no microphone, camera or other permission.
void offerPopups(WebKitWebView* opener, PopupContext context);

} // namespace kelo::webkit
