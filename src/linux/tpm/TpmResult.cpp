#include "linux/tpm/TpmResult.h"

#include "base/Translation.h"

#include <tss2/tss2_rc.h>
#include <tss2/tss2_tpm2_types.h>

#include <utility>

namespace kelo::tpm {

namespace {

/// Codes of format one name a parameter, a session or a handle beside the error itself.
TSS2_RC withoutPlace(TSS2_RC code) {
    constexpr TSS2_RC errorOfFormatOne = 0x3F | TPM2_RC_FMT1;
    return (code & TPM2_RC_FMT1) != 0 ? code & errorOfFormatOne : code;
}

TpmTrouble troubleOfChip(TSS2_RC code) {
    switch (withoutPlace(code)) {
    case TPM2_RC_LOCKOUT:
        return TpmTrouble::lockedOut;
    case TPM2_RC_OBJECT_MEMORY:
    case TPM2_RC_SESSION_MEMORY:
    case TPM2_RC_MEMORY:
    case TPM2_RC_SESSION_HANDLES:
    case TPM2_RC_OBJECT_HANDLES:
    case TPM2_RC_CONTEXT_GAP:
    case TPM2_RC_YIELDED:
    case TPM2_RC_CANCELED:
    case TPM2_RC_TESTING:
    case TPM2_RC_RETRY:
    case TPM2_RC_NV_RATE:
    case TPM2_RC_NV_UNAVAILABLE:
        return TpmTrouble::busy;
    case TPM2_RC_INTEGRITY:
        return TpmTrouble::otherChip;
    case TPM2_RC_AUTH_FAIL:
    case TPM2_RC_BAD_AUTH:
        return TpmTrouble::notAuthorized;
    default:
        return TpmTrouble::broken;
    }
}

std::string sentenceFor(TpmTrouble trouble) {
    switch (trouble) {
    case TpmTrouble::missing:
        return translated("There is no security chip (TPM) in this computer, or it is switched off "
                          "in the settings of the firmware.");
    case TpmTrouble::silent:
        return translated("This computer's security chip (TPM) does not answer. Restart the "
                          "computer; if that does not help, see whether the chip is switched on in "
                          "the settings of the firmware.");
    case TpmTrouble::notPermitted:
        return translated("Kelo may not use this computer's security chip (TPM). Ask whoever looks "
                          "after this computer to add you to the group \"tss\", then log in "
                          "again.");
    case TpmTrouble::lockedOut:
        return translated("This computer's security chip (TPM) has locked itself after too many "
                          "wrong attempts of some program. Wait for a few hours and try again.");
    case TpmTrouble::busy:
        return translated("This computer's security chip (TPM) is busy with other programs. Try "
                          "again in a moment.");
    case TpmTrouble::otherChip:
        return translated("This passkey can no longer be used, because this computer's security "
                          "chip (TPM) was cleared or replaced. Sign in another way, then register "
                          "a new passkey from the Account menu.");
    case TpmTrouble::notAuthorized:
        return translated("This passkey can no longer be used, because your keyring no longer "
                          "holds the key that protects it. Sign in another way, then register a "
                          "new passkey from the Account menu.");
    case TpmTrouble::broken:
        break;
    }
    return translated(
        "This computer's security chip (TPM) has failed. Restart the computer and try "
        "again.");
}

} // namespace

TpmTrouble troubleOf(TSS2_RC code) {
    const TSS2_RC layer = code & TSS2_RC_LAYER_MASK;
    if (layer == TSS2_TPM_RC_LAYER || layer == TSS2_RESMGR_TPM_RC_LAYER)
        return troubleOfChip(code & ~TSS2_RC_LAYER_MASK);
    switch (code & ~TSS2_RC_LAYER_MASK) {
    case TSS2_BASE_RC_IO_ERROR:
    case TSS2_BASE_RC_NO_CONNECTION:
    case TSS2_BASE_RC_NOT_SUPPORTED:
        return TpmTrouble::silent;
    case TSS2_BASE_RC_NOT_PERMITTED:
        return TpmTrouble::notPermitted;
    case TSS2_BASE_RC_TRY_AGAIN:
        return TpmTrouble::busy;
    default:
        return TpmTrouble::broken;
    }
}

Failure tpmFailure(TpmTrouble trouble, std::string cause) {
    return Failure(FailureKind::storage, sentenceFor(trouble), std::move(cause));
}

void require(TSS2_RC code, const char* operation) {
    if (code != TSS2_RC_SUCCESS)
        throw tpmFailure(troubleOf(code), std::string(operation) + ": " + Tss2_RC_Decode(code));
}

} // namespace kelo::tpm
