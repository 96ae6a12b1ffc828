#include "voice/VoiceController.h"

#include "log/DebugLog.h"

namespace kelo::voice {

void VoiceController::start(const std::shared_ptr<web::WebModel>&) {
    const auto weak = weak_from_this();
    hotkey->onTap = [weak] {
        if (const auto self = weak.lock())
            self->toggleWidget();
    };
    hotkey->onHoldStart = [weak] {
        if (const auto self = weak.lock())
            self->showWidget();
    };
    // A hold only ever opens the widget, so its end does nothing.
    hotkey->onHoldEnd = [] {};
    hotkey->start();
    log::debugLog("VoiceController.start — widget = web /widget host");
}

void VoiceController::toggleWidget() {
    if (widget->isVisible())
        widget->hide();
    else
        widget->show();
}

void VoiceController::showWidget() {
    if (!widget->isVisible())
        widget->show();
}

} // namespace kelo::voice
