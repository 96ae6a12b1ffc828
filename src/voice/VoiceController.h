#pragma once

#include "base/ObservableObject.h"
#include "voice/GlobalHotkey.h"
#include "voice/VoiceWidgetWindow.h"

#include <memory>

namespace kelo::web {
class WebModel;
}

namespace kelo::voice {

/// Binds the hotkey to the voice widget: a tap shows or hides the widget, a hold shows it. There is
/// one for the life of the process. start() is called each time a main window's content appears.
/// While the session is locked, nothing shows the widget. Main thread only.
class VoiceController final : public ObservableObject,
                              public std::enable_shared_from_this<VoiceController> {
public:
    /// The web model is not used: the widget has its own web view.
    void start(const std::shared_ptr<web::WebModel>& web);

    /// Does what a tap does, for menus and commands.
    void toggleWidget();

private:
    void showWidget();
    void showUnlessLocked();

    const std::shared_ptr<GlobalHotkey> hotkey = std::make_shared<GlobalHotkey>();
    const std::shared_ptr<VoiceWidgetWindow> widget = std::make_shared<VoiceWidgetWindow>();
};

} // namespace kelo::voice
