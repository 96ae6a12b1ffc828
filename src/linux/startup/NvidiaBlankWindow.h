#pragma once

namespace kelo::startup {

/// Works around web views that stay blank with NVIDIA's own kernel driver, whose buffers the web
/// engine fails to share between its processes: https://bugs.webkit.org/show_bug.cgi?id=262607
/// To be removed once every distribution we run on ships an engine without that defect. What the
/// user has set in WEBKIT_DISABLE_DMABUF_RENDERER stays. To be called first in main, before any
/// thread: it sets the environment.
void avoidBlankWindowOnNvidia();

} // namespace kelo::startup
