#pragma once

#include "base/Bytes.h"

#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

namespace kelo::demo {

/// Writes down the ceremonies that the service has accepted, so that other verifiers can be asked
/// as well: a JSON object in a line of its own for each. Holds no secret: a challenge is valid
/// once.
class CeremonyRecord {
public:
    CeremonyRecord() = default;
    explicit CeremonyRecord(std::filesystem::path file) : file(std::move(file)) {}

    /// Adds a line, if there is a file. A file that cannot be written gets a warning only.
    /// ceremony: "registration" or "sign-in"; credential: as the client has sent it.
    void add(const std::string& ceremony, const std::string& origin, ByteView challenge,
             const nlohmann::json& credential) const;

private:
    std::optional<std::filesystem::path> file;
};

} // namespace kelo::demo
