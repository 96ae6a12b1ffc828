#pragma once

#include "platform/Bundle.h"

namespace kelo::bundle {

/// The Info.plist that was installed with the program: share/kelo/Info.plist beside the program's
/// bin folder, wherever both were moved to; in a build tree, the one that the build made.
class InstalledBundle final : public platform::Bundle {
public:
    std::optional<platform::InformationDictionary> infoDictionary() override;
};

} // namespace kelo::bundle
