#include "linux/desktop/ProgramVersion.h"

#include "bundle/InstalledBundle.h"

#include <string_view>

namespace kelo::desktop {

namespace {

std::string textFor(const std::optional<platform::InformationDictionary>& dictionary,
                    std::string_view key) {
    if (!dictionary)
        return "?";
    const auto entry = dictionary->find(key);
    const auto* const text =
        entry == dictionary->end() ? nullptr : std::get_if<std::string>(&entry->second);
    return text ? *text : "?";
}

} // namespace

std::string programVersion() {
    const auto dictionary = bundle::InstalledBundle().infoDictionary();
    return textFor(dictionary, "CFBundleShortVersionString") + " (" +
           textFor(dictionary, "CFBundleVersion") + ")";
}

gtk::ReportOption versionOption() {
    return {"version", "Show the version, then exit",
            [] { return "Kelo " + programVersion() + "\n"; }};
}

} // namespace kelo::desktop
