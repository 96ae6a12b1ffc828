#pragma once

#include "platform/SceneGraph.h"

#include <string>

namespace kelo::menu {

/// Null for a separator.
const std::string* labelOf(const platform::MenuEntry& entry);

/// Whether the user can choose the entry: an enabled item, or the link to the settings.
bool canBeChosen(const platform::MenuEntry& entry);

/// The text in the form in which both the toolkit's menus and the tray's menus show it literally:
/// with every underscore doubled, because they take a single one for the sign of a mnemonic.
std::string withoutMnemonics(const std::string& text);

} // namespace kelo::menu
