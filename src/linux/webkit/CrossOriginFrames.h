#pragma once

#include "base/Url.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Takes microphone, camera and screen from frames of other origins than the service's, also where
/// the page that holds one says allow="microphone". The engine asks the same question for a frame
/// as for the page around it, so a frame must not come to ask.
///
/// 1. In documents of the service, "allow" loses what it says of these devices. Without it the
///    engine refuses a foreign frame by itself, whatever windows that frame makes: empty ones,
///    those of srcdoc, blob:, data: and javascript:, and the one that is there while a page is on
///    its way, in which no script of ours can run.
/// 2. In foreign frames the methods themselves always refuse.
///
/// Not covered by the first: an allow="microphone" within a closed shadow that is declared in
/// markup, which no script can see. There the second stands alone, and a frame that takes the
/// method from a window that is still empty gets round it.
void keepMediaFromForeignFrames(WebKitUserContentManager* manager, const Url& service);

} // namespace kelo::webkit
