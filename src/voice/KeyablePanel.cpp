#include "voice/KeyablePanel.h"

#include "platform/Desktop.h"

#include <utility>

namespace kelo::voice {

namespace {

platform::PanelDescription keyable(platform::PanelDescription description) {
    description.canBecomeKeyWindow = KeyablePanel::canBecomeKeyWindow;
    description.canBecomeMainWindow = KeyablePanel::canBecomeMainWindow;
    return description;
}

} // namespace

KeyablePanel::KeyablePanel(platform::PanelDescription description)
    : panel(platform::Desktop::current().makePanel(keyable(std::move(description)))) {}

} // namespace kelo::voice
