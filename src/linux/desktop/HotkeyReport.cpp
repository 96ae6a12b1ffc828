#include "linux/desktop/HotkeyReport.h"

#include "base/Translation.h"
#include "linux/panel/DesktopPanels.h"

namespace kelo::desktop {

namespace {

std::string line(const input::SourceStatus& source) {
    const auto& [available, reason, advice] = source.availability;
    std::string text = available ? translated("%1: available. %2", {source.name, reason})
                                 : translated("%1: not available. %2", {source.name, reason});
    if (!advice.empty())
        text += " " + advice;
    return text + "\n";
}

} // namespace

std::string hotkeyReport(const std::vector<input::SourceStatus>& sources,
                         const std::string& panel) {
    std::string report;
    for (const auto& source : sources)
        report += line(source);
    if (!panel.empty())
        report += translated("Voice panel: %1", {panel}) + "\n";
    return report;
}

command::ReportOption hotkeyStatusOption() {
    return {"hotkey-status",
            [] { return hotkeyReport(input::hotkeyStatus(), panel::panelStatus()); }};
}

} // namespace kelo::desktop
