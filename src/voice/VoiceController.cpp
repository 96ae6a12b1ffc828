#include "voice/VoiceController.h"

#include "log/DebugLog.h"
#include "platform/Desktop.h"

namespace kelo::voice {

void VoiceController::start(const std::shared_ptr<web::WebModel>&) {
    // So that the answer is known before the first press asks for it.
    platform::Desktop::current().userSession();
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
        showUnlessLocked();
}

void VoiceController::showWidget() {
    if (!widget->isVisible())
        showUnlessLocked();
}

// Every way to show the widget ends here. It is signed in, so whoever stands before a lock screen
// must not get it.
void VoiceController::showUnlessLocked() {
    platform::Desktop::current().userSession().performUnlessLocked([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (self && !self->widget->isVisible())
            self->widget->show();
    });
}

} // namespace kelo::voice
