#include "linux/bundle/InstalledBundle.h"

namespace kelo::desktop {

std::optional<platform::InformationDictionary> InstalledBundle::infoDictionary() {
    return std::nullopt;
}

} // namespace kelo::desktop
