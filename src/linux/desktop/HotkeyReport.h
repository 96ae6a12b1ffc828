#pragma once

#include "linux/gtk/application/CommandLine.h"
#include "linux/input/HotkeyStatus.h"

#include <string>
#include <vector>

namespace kelo::desktop {

/// One line for each source, in the order given: its name, whether it is available, and why not or
/// what for, with what the user can do. The last line is about the panel.
std::string hotkeyReport(const std::vector<input::SourceStatus>& sources, const std::string& panel);

/// --hotkey-status
gtk::ReportOption hotkeyStatusOption();

} // namespace kelo::desktop
