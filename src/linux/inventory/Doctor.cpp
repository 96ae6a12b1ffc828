#include "linux/inventory/Doctor.h"

#include "authenticator/store/CredentialStore.h"
#include "base/Failure.h"
#include "base/Translation.h"
#include "linux/authorization/PasskeyFile.h"
#include "linux/tpm/TpmKeyStore.h"

#include <algorithm>

namespace kelo::inventory {

namespace {

using authorization::KeyringState;
using authorization::VerificationMeans;
using State = Finding::State;

Finding diagnoseChip(const Surroundings& found) {
    Finding chip{"chip", State::good, translated("Security chip"),
                 translated("New passkeys are made in this computer's security chip (TPM).")};
    if (!found.chipTrouble)
        return chip;
    if (found.passkeysInChip > 0) {
        chip.state = State::trouble;
        chip.sentence = *found.chipTrouble;
    } else {
        chip.state = State::notice;
        chip.sentence = translated("New passkeys are kept in software. %1", {*found.chipTrouble});
    }
    return chip;
}

Finding diagnoseKeyring(const Surroundings& found) {
    Finding keyring{"keyring", State::good, translated("Keyring"), ""};
    switch (found.keyring) {
    case KeyringState::unlocked:
        keyring.sentence = translated("Your keyring is unlocked.");
        break;
    case KeyringState::own:
        keyring.sentence =
            translated("The key that protects your passkeys is in a keyring of its own, which asks "
                       "for its password at each use.");
        break;
    case KeyringState::empty:
        keyring.sentence = translated("Your keyring is made when it is first needed.");
        break;
    case KeyringState::locked:
        keyring.state = State::notice;
        keyring.sentence =
            translated("Your keyring is locked. It asks for its password when a passkey is used.");
        break;
    case KeyringState::absent:
        keyring.state = State::trouble;
        keyring.sentence = translated(
            "No keyring is running, and without one a passkey cannot be kept safe. Start "
            "your desktop's keyring or password manager and try again.");
        break;
    }
    return keyring;
}

Finding diagnoseVerification(const Surroundings& found) {
    Finding verification{"verification", State::good, translated("Check of the user"),
                         translated("Kelo can check that it is you, as your login does.")};
    if (found.verification == VerificationMeans::noHelper) {
        verification.state = State::trouble;
        verification.sentence =
            translated("The program kelo-verify-user is missing or does not start. Install Kelo "
                       "again.");
    } else if (found.verification == VerificationMeans::noService) {
        verification.state = State::trouble;
        verification.sentence =
            translated("The PAM service \"kelo\" is missing. Install Kelo again, "
                       "or ask whoever looks after this computer for the file "
                       "/etc/pam.d/kelo.");
    }
    return verification;
}

Finding diagnoseFile(const Surroundings& found) {
    Finding file{"passkeys", State::good, translated("Passkeys"), ""};
    if (found.fileTrouble) {
        file.state = State::trouble;
        file.sentence = *found.fileTrouble;
    } else {
        file.sentence = translatedCount("There is %1 passkey on this computer.",
                                        "There are %1 passkeys on this computer.", found.passkeys);
    }
    return file;
}

} // namespace

Surroundings lookAround(const std::stop_token& stop) {
    Surroundings found;
    if (const auto trouble = tpm::chipTrouble(tpm::chipOfThisComputer))
        found.chipTrouble = trouble->localizedDescription();
    found.keyring = authorization::keyringState(stop);
    found.verification = authorization::verificationMeans(authorization::verificationHelperPath());
    try {
        const auto all = authenticator::CredentialStore(authorization::passkeyFile()).all();
        found.passkeys = all.size();
        found.passkeysInChip = static_cast<std::size_t>(std::ranges::count(
            all, authenticator::KeyKeeper::chip, &authenticator::CredentialRecord::keeper));
    } catch (const Failure& failure) {
        found.fileTrouble = failure.localizedDescription();
    }
    return found;
}

std::vector<Finding> diagnose(const Surroundings& found) {
    return {diagnoseFile(found), diagnoseChip(found), diagnoseKeyring(found),
            diagnoseVerification(found)};
}

} // namespace kelo::inventory
