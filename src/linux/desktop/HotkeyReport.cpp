#include "linux/desktop/HotkeyReport.h"

#include "linux/panel/DesktopPanels.h"

namespace kelo::desktop {

namespace {

std::string line(const input::SourceStatus& source) {
    std::string text = source.name;
    text += source.availability.available ? ": available. " : ": not available. ";
    text += source.availability.reason;
    if (!source.availability.advice.empty())
        text += " " + source.availability.advice;
    return text + "\n";
}

} // namespace

std::string hotkeyReport(const std::vector<input::SourceStatus>& sources,
                         const std::string& panel) {
    std::string report;
    for (const auto& source : sources)
        report += line(source);
    if (!panel.empty())
        report += "Voice panel: " + panel + "\n";
    return report;
}

gtk::ReportOption hotkeyStatusOption() {
    return {"hotkey-status", "Show which input sources the hotkey can use, then exit",
            [] { return hotkeyReport(input::hotkeyStatus(), panel::panelStatus()); }};
}

} // namespace kelo::desktop
