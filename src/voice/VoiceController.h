#pragma once

#include "base/ObservableObject.h"
#include "voice/GlobalHotkey.h"
#include "voice/VoiceWidgetWindow.h"

#include <memory>

namespace kelo::web {
class WebModel;
}

namespace kelo::voice {

/// Puts the voice widget one keystroke away: a tap of the chord shows or hides it, a hold shows it.
/// One for the life of the process; start() is called each time a main window's content appears.
/// Main thread only.
class VoiceController final : public ObservableObject,
                              public std::enable_shared_from_this<VoiceController> {
public:
    /// The web model is accepted and not used: the widget has a web view of its own.
    void start(const std::shared_ptr<web::WebModel>& web);

    /// What a tap does, for those who ask for it by other means than the chord.
    void toggleWidget();

private:
    void showWidget();

    const std::shared_ptr<GlobalHotkey> hotkey = std::make_shared<GlobalHotkey>();
    const std::shared_ptr<VoiceWidgetWindow> widget = std::make_shared<VoiceWidgetWindow>();
};

} // namespace kelo::voice
