#pragma once

#include "authenticator/consent/UserVerifier.h"
#include "authenticator/store/CredentialStore.h"
#include "linux/inventory/Doctor.h"
#include "linux/inventory/Terminal.h"

#include <functional>
#include <iosfwd>
#include <span>

namespace kelo::inventory {

/// What the command line works with. All references must outlive the run.
struct CommandParts {
    const authenticator::CredentialStore& passkeys;
    authenticator::UserVerifier& verifier;
    Terminal& terminal;
    std::function<Surroundings()> lookAround;
    std::function<void()> keepKeyInOwnKeyring;
    std::function<void()> keepKeyInDefaultKeyring;
    std::ostream& output;
    std::ostream& errors;
};

/// Runs kelo-passkeys with these arguments, which do not include the program's name. The exit
/// status: 0 for success, also when there is nothing to list; 1 for a failure, a refusal, or where
/// the doctor finds trouble; 2 for a wrong command line. The parts must outlive the task.
Task<int> runCommand(const CommandParts& parts, std::span<const char* const> words);

} // namespace kelo::inventory
