#pragma once

#include "component/webkit/WebKitFixture.h"

#include <optional>
#include <string>
#include <vector>

namespace kelo::test {

/// Answers permission requests as the test says, or leaves them open.
class MediaDecider final : public platform::UserInterfaceDelegate {
public:
    void requestMediaCapturePermission(platform::EmbeddedWebView&,
                                       const platform::SecurityOrigin& origin,
                                       platform::MediaCaptureType type,
                                       DecisionHandler decisionHandler) override {
        origins.push_back(origin);
        types.push_back(type);
        if (answer)
            decisionHandler(*answer);
        else
            waiting = std::move(decisionHandler);
    }

    std::optional<platform::PermissionDecision> answer = platform::PermissionDecision::grant;
    DecisionHandler waiting;
    std::vector<platform::SecurityOrigin> origins;
    std::vector<platform::MediaCaptureType> types;
};

/// Views in a window, since a page that cannot be seen does not get the microphone, on a computer
/// with the engine's simulated microphone, camera and screen. Tests who may use them.
class MediaFixture : public WebKitFixture {
protected:
    MediaFixture();
    ~MediaFixture() override;

    /// A view with the decider as its delegate.
    void makeMediaView(const Url& service);
    /// Puts the view into the window.
    void showInWindow();
    /// What a main window does with its view when it is closed.
    void leaveWindow() { gtk_window_set_child(GTK_WINDOW(window), nullptr); }
    void useMakeBelieveDevices();

    /// What becomes of an expression for a promise of a stream: "captured", or the error's name.
    std::string outcomeOf(const std::string& promise);

    static constexpr const char* microphone = "navigator.mediaDevices.getUserMedia({audio: true})";
    static constexpr const char* camera = "navigator.mediaDevices.getUserMedia({video: true})";

    std::shared_ptr<MediaDecider> decider = std::make_shared<MediaDecider>();

private:
    GtkWidget* window;
};

} // namespace kelo::test
