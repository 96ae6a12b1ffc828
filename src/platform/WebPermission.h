#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace kelo::platform {

class EmbeddedWebView;

/// The origin of a page.
struct SecurityOrigin {
    std::string scheme; ///< "https"
    std::string host;
    std::uint16_t port = 0; ///< 0 for the scheme's default
};

enum class MediaCaptureType { camera = 0, microphone = 1, cameraAndMicrophone = 2 };

enum class PermissionDecision {
    /// Ask the user.
    prompt = 0,
    grant = 1,
    deny = 2,
};

/// Decides which permissions the pages of a web view get. Main thread only.
class UserInterfaceDelegate {
public:
    using DecisionHandler = std::function<void(PermissionDecision)>;

    virtual ~UserInterfaceDelegate() = default;
    /// A page asks for the microphone or the camera. Call the handler once, during this call or
    /// later.
    virtual void requestMediaCapturePermission(EmbeddedWebView& webView,
                                               const SecurityOrigin& origin, MediaCaptureType type,
                                               DecisionHandler decisionHandler) = 0;
};

} // namespace kelo::platform
