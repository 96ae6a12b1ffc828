#include "linux/tpm/ChipCheck.h"

#include "linux/tpm/TpmConnection.h"
#include "linux/tpm/TpmKey.h"

namespace kelo::tpm {

std::optional<Failure> chipTrouble(const std::string& chip) {
    try {
        requireSuitableChip(TpmConnection(chip));
        return std::nullopt;
    } catch (const Failure& failure) {
        return failure;
    }
}

} // namespace kelo::tpm
