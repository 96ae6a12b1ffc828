#pragma once

#include "base/ObservableObject.h"
#include "platform/EmbeddedWebView.h"
#include "platform/EventMonitors.h"
#include "voice/KeyablePanel.h"

#include <functional>
#include <memory>
#include <optional>

namespace kelo::voice {

/// The floating voice panel. It shows the service's widget page over other programs and takes the
/// keyboard without bringing the program to the front. Panel, web view and Escape monitor are made
/// at the first show and kept. It hides when the session locks. Main thread only.
///
/// Must be owned by a shared pointer, because the platform's callbacks hold it weakly.
class VoiceWidgetWindow final : public platform::UserInterfaceDelegate,
                                public platform::ScriptMessageHandler,
                                public std::enable_shared_from_this<VoiceWidgetWindow> {
public:
    /// Called by hide(). Empty unless the owner sets it.
    std::function<void()> onClose;

    /// Whether the panel is on the screen. Other windows may cover it.
    bool isVisible() const;
    /// Brings the panel to the front and gives it the keyboard. If it was hidden, first reloads the
    /// page and places the panel at the bottom centre of the main screen.
    void show();
    /// Hides the panel and turns the page's microphone and camera off. The page stays loaded until
    /// the next show.
    void hide();

    /// Grants microphone and camera to the service's own host without asking, and to no other host.
    void requestMediaCapturePermission(platform::EmbeddedWebView& webView,
                                       const platform::SecurityOrigin& origin,
                                       platform::MediaCaptureType type,
                                       DecisionHandler decisionHandler) override;
    /// The message "close" to the handler "kelo" hides the panel. All others are ignored.
    void didReceiveScriptMessage(platform::EmbeddedWebView& webView,
                                 const platform::ScriptMessage& message) override;

private:
    const KeyablePanel& ensurePanel();
    std::shared_ptr<platform::EmbeddedWebView> makeWebView();
    std::shared_ptr<platform::EventMonitor> watchForEscape();
    void place();
    void hideWhenLocked();

    std::optional<KeyablePanel> panel;
    std::shared_ptr<platform::EmbeddedWebView> webView;
    std::shared_ptr<platform::EventMonitor> escMonitor;
    Observation lockObservation; ///< while the panel is shown
};

} // namespace kelo::voice
