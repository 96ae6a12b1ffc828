#pragma once

#include "authenticator/Association.h"
#include "authenticator/CredentialStore.h"
#include "authenticator/KeyStore.h"
#include "authenticator/PasskeySheet.h"
#include "authenticator/UserVerifier.h"
#include "platform/Clock.h"
#include "platform/Worker.h"

#include <span>

namespace kelo::authenticator {

/// The parts a ceremony works with. All of them must outlive it.
struct Authenticator {
    std::span<const Association> associations;
    PasskeySheetFactory& sheets;
    UserVerifier& verifier;
    KeyStore& keys;
    const CredentialStore& credentials;
    /// Where the credential store's file is read and written.
    platform::Worker& worker;
    const platform::Clock& clock;
};

} // namespace kelo::authenticator
