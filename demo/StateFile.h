#pragma once

#include "demo/accounts/SessionTable.h"
#include "demo/passkeys/PasskeyStore.h"

#include <filesystem>
#include <optional>

namespace kelo::demo {

/// Keeps passkeys and sessions from one run to the next, or does nothing when there is no file.
class StateFile {
public:
    explicit StateFile(std::optional<std::filesystem::path> path);

    /// Fills the stores. A file that is not there is a first start. Throws ServiceError when it is
    /// damaged or of a later version; the file is then left as it is.
    void load(PasskeyStore& passkeys, SessionTable& sessions) const;

    /// Throws ServiceError; what was kept before then stays.
    void save(const PasskeyStore& passkeys, const SessionTable& sessions) const;

private:
    std::optional<std::filesystem::path> path;
};

} // namespace kelo::demo
