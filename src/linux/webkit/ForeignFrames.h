#pragma once

#include "platform/Url.h"

#include <webkit/webkit.h>

namespace kelo::desktop {

/// Takes microphone, camera and screen from every frame that is not of the service.
void keepMediaFromForeignFrames(WebKitUserContentManager* manager, const platform::Url& service);

} // namespace kelo::desktop
