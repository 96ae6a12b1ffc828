#pragma once

#include "SessionBus.h"
#include "component/tpm/SimulatedChip.h"

#include "authenticator/store/CredentialStore.h"
#include "base/Bytes.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace kelo {

/// Programs with the whole authenticator (RoadProgram.cpp), which share a file, a keyring and a
/// simulated chip.
class RoadFixture : public testing::Test {
protected:
    RoadFixture();

    Child start(const std::vector<std::string>& moreEnvironment = {}) const;
    /// Has it do a piece of work, without waiting for the answer.
    static void ask(const Child& program, const std::string& verb, const std::string& object) {
        program.write(verb + " " + object + "\n");
    }
    /// The answer to the work; null if the program has ended.
    static nlohmann::json answer(const Child& program);
    /// Both, by a program of its own.
    nlohmann::json answerTo(const std::string& verb, const std::string& object) const;

    /// Has a program of its own make a passkey and sign with it, and expects that somebody else's
    /// library accepts both. The answer to the registration.
    nlohmann::json expectRegistration(const std::string& account) const;
    void expectAccepted(const nlohmann::json& signedIn, const Bytes& publicKey) const;
    /// Expects that every record in the file is whole and signs.
    void expectAllSign() const;

    test::TemporaryFolder folder;
    SessionBus bus{folder.path()};
    tests::SimulatedChip chip;
    const authenticator::CredentialStore passkeys{folder.path() / "data" / "kelo" /
                                                  "passkeys.sqlite"};

private:
    Child keyring;
};

} // namespace kelo
