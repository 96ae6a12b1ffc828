#pragma once

#include "authenticator/Authenticator.h"
#include "base/async/Cancellation.h"
#include "platform/Authorization.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace kelo::authorization {

/// The passkeys of this computer: makes the controllers behind the platform's seam, and holds the
/// parts they share. Nothing is touched (disk, keyring, helper, thread) before the first ceremony
/// gets to it. Main thread; spawned tasks must be dropped before this goes.
class PasskeyServices {
public:
    /// The factory must outlive this.
    explicit PasskeyServices(authenticator::PasskeySheetFactory& sheets);
    ~PasskeyServices();
    PasskeyServices(const PasskeyServices&) = delete;
    PasskeyServices& operator=(const PasskeyServices&) = delete;

    /// One request a controller. A ceremony that starts gives up the one that is running.
    std::shared_ptr<platform::AuthorizationController>
    makeController(std::vector<platform::AuthorizationRequest> requests);

    /// The parts, made when first asked for.
    const authenticator::Authenticator& authenticator();
    /// Gives up the ceremony that is running and puts another in its place.
    void begin(Cancellation ceremony);

private:
    struct Parts;

    authenticator::PasskeySheetFactory& sheets;
    std::unique_ptr<Parts> parts;
    std::optional<Cancellation> running;
};

/// Where the records of the passkeys are kept: below $XDG_DATA_HOME, by default ~/.local/share.
std::filesystem::path passkeyFile();

} // namespace kelo::authorization
