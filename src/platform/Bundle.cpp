#include "platform/Bundle.h"

namespace kelo::platform {

std::string versionString(Bundle& bundle) {
    const auto text = [&](std::string_view key) {
        const auto dictionary = bundle.infoDictionary().value_or(InformationDictionary());
        return informationValue<std::string>(dictionary, key).value_or("?");
    };
    return text("CFBundleShortVersionString") + " (" + text("CFBundleVersion") + ")";
}

} // namespace kelo::platform
