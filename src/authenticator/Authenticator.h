#pragma once

#include "authenticator/Association.h"
#include "authenticator/consent/PasskeySheet.h"
#include "authenticator/consent/UserVerifier.h"
#include "authenticator/keys/KeyStore.h"
#include "authenticator/store/CredentialStore.h"
#include "base/Clock.h"
#include "base/async/Worker.h"

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
    Worker& worker;
    const Clock& clock;
};

} // namespace kelo::authenticator
