#pragma once

namespace kelo::platform {

/// A window of ours: to present something over, or to be told from another one.
class Window {
public:
    virtual ~Window() = default;
};

} // namespace kelo::platform
