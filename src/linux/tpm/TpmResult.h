#pragma once

#include "base/Failure.h"

#include <tss2/tss2_common.h>

#include <string>

namespace kelo::tpm {

/// What went wrong in a call to the chip, as far as it makes a difference to the user.
enum class TpmTrouble {
    missing,       ///< the system shows no chip
    silent,        ///< it does not answer
    notPermitted,  ///< the device is there, and this user may not open it
    lockedOut,     ///< it refuses after too many wrong authorisations
    busy,          ///< its memory is taken by other programs, or it asks for patience
    otherChip,     ///< it was cleared, or it is another one than that which made the key
    notAuthorized, ///< the value from the keyring is not the one that the key was made with
    broken,        ///< anything else
};

/// The trouble that a response code stands for (TPM 2.0 Library, Part 2, 6.6; TSS 2.0 Overview,
/// Response Codes). code: must not be TSS2_RC_SUCCESS.
TpmTrouble troubleOf(TSS2_RC code);

/// A failure of kind storage whose text tells the user what to do. cause: for the log.
Failure tpmFailure(TpmTrouble trouble, std::string cause);

/// Throws tpmFailure() unless the code is TSS2_RC_SUCCESS. operation: names the call in the log.
void require(TSS2_RC code, const char* operation);

} // namespace kelo::tpm
