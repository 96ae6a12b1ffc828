#pragma once

#include "base/Url.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Denies microphone, camera and screen to frames that are cross-origin to the service, even if the
/// page around them says allow="microphone". The engine's permission request does not tell a frame
/// from its page, so a cross-origin frame must not get as far as a request.
///
/// 1. In documents of the service, these devices are removed from every "allow" attribute. Without
///    it, the engine refuses a cross-origin frame itself. That includes all windows the frame
///    creates: empty ones, srcdoc, blob:, data: and javascript:, and the initial document of a
///    frame that is still loading, where user scripts do not run.
/// 2. In cross-origin frames, the methods themselves always refuse.
///
/// Gap: scripts cannot see a closed shadow root that is declared in markup. For an
/// allow="microphone" in there, only the second measure applies. A frame can evade that one by
/// taking the method from a window that is still empty.
void denyMediaToCrossOriginFrames(WebKitUserContentManager* manager, const Url& service);

} // namespace kelo::webkit
