#pragma once

#include "platform/EmbeddedWebView.h"
#include "platform/EventMonitors.h"
#include "voice/KeyablePanel.h"

#include <functional>
#include <memory>
#include <optional>

namespace kelo::voice {

/// The floating voice panel: the service's widget page over whatever the user is at, with the
/// keyboard but without bringing the program to the front. Panel, web view and the watch for Escape
/// are made at the first show and kept. Main thread only.
///
/// What the platform calls holds it weakly, so it lives in a shared pointer.
class VoiceWidgetWindow final : public platform::UserInterfaceDelegate,
                                public platform::ScriptMessageHandler,
                                public std::enable_shared_from_this<VoiceWidgetWindow> {
public:
    /// Run each time the widget is hidden, by whatever means. Empty here: a hook for an owner.
    std::function<void()> onClose;

    /// On the screen, perhaps behind something else.
    bool isVisible() const;
    /// From hidden: loads the page anew and places the panel at the bottom centre of the main
    /// screen. In any case: to the front, with the keyboard.
    void show();
    /// The page is left as it is until the next show.
    void hide();

    /// The service's own host gets microphone and camera without a question, no other host ever.
    void requestMediaCapturePermission(platform::EmbeddedWebView& webView,
                                       const platform::SecurityOrigin& origin,
                                       platform::MediaCaptureType type,
                                       DecisionHandler decisionHandler) override;
    /// "close", posted to the handler "kelo", hides the panel; everything else is ignored.
    void didReceiveScriptMessage(platform::EmbeddedWebView& webView,
                                 const platform::ScriptMessage& message) override;

private:
    const KeyablePanel& ensurePanel();
    std::shared_ptr<platform::EmbeddedWebView> makeWebView();
    std::shared_ptr<platform::EventMonitor> watchForEscape();
    void place();

    std::optional<KeyablePanel> panel;
    std::shared_ptr<platform::EmbeddedWebView> webView;
    std::shared_ptr<platform::EventMonitor> escMonitor;
};

} // namespace kelo::voice
