#include "app/SettingsView.h"

#include "platform/Desktop.h"
#include "service/ServiceEndpoints.h"

#include <string_view>

namespace kelo::app {

namespace {

constexpr platform::Size size{360, 140};

std::string informationText(std::string_view key) {
    const auto dictionary = platform::Desktop::current().mainBundle().infoDictionary();
    if (!dictionary)
        return "?";
    const auto entry = dictionary->find(key);
    const auto* const text =
        entry == dictionary->end() ? nullptr : std::get_if<std::string>(&entry->second);
    return text ? *text : "?";
}

} // namespace

platform::SettingsDescription SettingsView::body() const {
    return {
        {{"Version", versionString()}, {"Backend", std::string(service::relyingPartyIdentifier())}},
        size};
}

std::string SettingsView::versionString() {
    return informationText("CFBundleShortVersionString") + " (" +
           informationText("CFBundleVersion") + ")";
}

} // namespace kelo::app
