#pragma once

#include "demo/accounts/SessionTable.h"
#include "demo/passkeys/PasskeyStore.h"

#include <filesystem>
#include <optional>

namespace kelo::demo {

/// Stores passkeys and sessions between two runs, or does nothing if there is no file.
class StateFile {
public:
    explicit StateFile(std::optional<std::filesystem::path> path);

    /// Fills the stores. Without a file, this is the first start. Throws ServiceError if the file
    /// is damaged or of a later version, and leaves it unchanged.
    void load(PasskeyStore& passkeys, SessionTable& sessions) const;

    /// Throws ServiceError; the former content is kept then.
    void save(const PasskeyStore& passkeys, const SessionTable& sessions) const;

private:
    std::optional<std::filesystem::path> path;
};

} // namespace kelo::demo
