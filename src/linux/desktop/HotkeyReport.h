#pragma once

#include "linux/command/Report.h"
#include "linux/input/HotkeyStatus.h"

#include <string>
#include <vector>

namespace kelo::desktop {

/// One line per source, in the given order: name, availability, reason and advice. The last line is
/// about the panel; an empty text leaves it out.
std::string hotkeyReport(const std::vector<input::SourceStatus>& sources, const std::string& panel);

/// --hotkey-status
command::ReportOption hotkeyStatusOption();

} // namespace kelo::desktop
