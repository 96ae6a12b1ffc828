#include "app/SettingsView.h"

#include "platform/Desktop.h"
#include "service/ServiceEndpoints.h"

#include <string>

namespace kelo::app {

namespace {

constexpr platform::Size size{360, 140};

} // namespace

platform::SettingsDescription SettingsView::body() const {
    return {{{"Version", platform::versionString(platform::Desktop::current().mainBundle())},
             {"Backend", std::string(service::relyingPartyIdentifier())}},
            size};
}

} // namespace kelo::app
