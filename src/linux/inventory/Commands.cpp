#include "linux/inventory/Commands.h"

#include "base/Failure.h"
#include "base/Translation.h"
#include "linux/inventory/Deletion.h"
#include "linux/inventory/Listing.h"

#include <algorithm>
#include <array>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelo::inventory {

namespace {

using authenticator::CredentialRecord;
using authenticator::VerificationOutcome;

constexpr int succeeded = 0;
constexpr int failed = 1;
constexpr int wrongUsage = 2;

std::string helpText() {
    constexpr std::size_t widest = sizeof "keyring default";
    const std::array<std::pair<std::string_view, std::string>, 6> lines{
        {{"list", translated("shows the passkeys that Kelo keeps on this computer")},
         {"delete NAME",
          translated("deletes one of them, after asking and checking that it is you")},
         {"doctor", translated("says what passkeys need here, and what to do about it")},
         {"keyring own",
          translated("protects them by a keyring that asks for its password at each use")},
         {"keyring default", translated("protects them by the keyring of your login again")},
         {"--json", translated("for other programs: list and doctor only")}}};
    std::string text = translated(
        "Usage: kelo-passkeys [list | delete NAME | doctor | keyring own|default] [--json]");
    text += "\n\n";
    for (const auto& [words, meaning] : lines)
        text += "  " + std::string(words) + std::string(widest - words.size() + 1, ' ') + meaning +
                "\n";
    return text;
}

/// The passkeys whose name begins like this.
std::vector<CredentialRecord> calledSo(std::string_view name,
                                       const std::vector<CredentialRecord>& all) {
    std::vector<CredentialRecord> found;
    for (const CredentialRecord& passkey : all)
        if (!name.empty() && nameOf(passkey, all).starts_with(name))
            found.push_back(passkey);
    return found;
}

class Command {
public:
    explicit Command(const CommandParts& parts) : parts(parts) {}

    Task<int> run(std::span<const char* const> given) {
        std::vector<std::string_view> words(given.begin(), given.end());
        const bool isForPrograms = std::erase(words, "--json") > 0;
        if (words == std::vector<std::string_view>{"--help"})
            co_return print(helpText());
        const std::string_view command = words.empty() ? "list" : words[0];
        if (command == "list" && words.size() <= 1)
            co_return list(isForPrograms);
        if (command == "doctor" && words.size() == 1)
            co_return doctor(isForPrograms);
        if (command == "delete" && words.size() == 2 && !isForPrograms)
            co_return co_await remove(words[1]);
        if (command == "keyring" && words.size() == 2 && !isForPrograms && words[1] == "own")
            co_return moveKey(parts.keepKeyInOwnKeyring,
                              translated("Your keyring asks for that password from now on, "
                                         "whenever a passkey is used. Do not tick that it is to "
                                         "be unlocked at each login, or any program of yours can "
                                         "use the passkeys."));
        if (command == "keyring" && words.size() == 2 && !isForPrograms && words[1] == "default")
            co_return moveKey(parts.keepKeyInDefaultKeyring,
                              translated("The key that protects your passkeys is in the keyring of "
                                         "your login."));
        parts.errors << "kelo-passkeys: " << translated("Try \"%1\".", {"kelo-passkeys --help"})
                     << std::endl;
        co_return wrongUsage;
    }

private:
    int print(const std::string& text) {
        parts.output << text << std::flush;
        return parts.output ? succeeded : failed;
    }

    int refuse(const std::string& sentence) {
        parts.errors << "kelo-passkeys: " << sentence << std::endl;
        return failed;
    }

    int list(bool isForPrograms) {
        const auto all = parts.passkeys.all();
        return print(isForPrograms ? jsonOf(all) : tableOf(all));
    }

    int doctor(bool isForPrograms) {
        const auto findings = diagnose(parts.lookAround());
        const int status = print(isForPrograms ? jsonOf(findings) : reportOf(findings));
        const bool hasTrouble =
            std::ranges::count(findings, Finding::State::trouble, &Finding::state) > 0;
        return hasTrouble ? failed : status;
    }

    int moveKey(const std::function<void()>& move, const std::string& done) {
        move();
        return print(done + "\n");
    }

    Task<int> remove(std::string_view name) {
        const auto all = parts.passkeys.all();
        const auto found = calledSo(name, all);
        if (found.size() != 1)
            co_return refuse(
                found.empty()
                    ? translated("There is no passkey %1. \"%2\" shows all.",
                                 {name, "kelo-passkeys list"})
                    : translated("There are several passkeys %1…: name one of them.", {name}));
        if (!confirms(found.front()))
            co_return refuse(nothingDeleted());
        const VerificationOutcome outcome = co_await parts.verifier.verify(parts.terminal);
        if (outcome != VerificationOutcome::verified)
            co_return refuse(refusalFor(outcome));
        parts.passkeys.remove(found.front().credentialId);
        co_return print(passkeyDeleted() + "\n");
    }

    bool confirms(const CredentialRecord& passkey) {
        print(deletionWarning(passkey.accountName, passkey.relyingPartyIdentifier) + "\n");
        const auto answer =
            parts.terminal.readLine(translated("Type \"delete\" to go on:") + " ", true);
        return answer && answer->view() == "delete";
    }

    const CommandParts& parts;
};

} // namespace

Task<int> runCommand(const CommandParts& parts, std::span<const char* const> words) {
    Command command(parts);
    try {
        co_return co_await command.run(words);
    } catch (const Failure& failure) {
        parts.errors << "kelo-passkeys: " << failure.localizedDescription() << std::endl;
        co_return failed;
    }
}

} // namespace kelo::inventory
