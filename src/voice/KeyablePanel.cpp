#include "voice/KeyablePanel.h"

#include "platform/Desktop.h"

namespace kelo::voice {

namespace {

platform::PanelDescription keyable(platform::PanelDescription description) {
    description.canBecomeKeyWindow = KeyablePanel::canBecomeKeyWindow;
    description.canBecomeMainWindow = KeyablePanel::canBecomeMainWindow;
    return description;
}

} // namespace

KeyablePanel::KeyablePanel(platform::PanelDescription description)
    : panel(platform::Desktop::current().makePanel(keyable(description))) {}

} // namespace kelo::voice
