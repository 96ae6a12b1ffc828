#pragma once

namespace kelo::platform {

/// A window of this program. Callers only compare windows and present others over them.
class Window {
public:
    virtual ~Window() = default;
};

} // namespace kelo::platform
