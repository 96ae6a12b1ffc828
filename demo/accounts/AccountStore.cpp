#include "demo/accounts/AccountStore.h"

#include "demo/base/Random.h"

#include <algorithm>

namespace kelo::demo {
namespace {

/// All addresses without an account share one allowance, so that guessing them cannot fill memory.
const std::string nobody = "(no account)";

std::string lowerCase(std::string_view text) {
    std::string result(text);
    for (char& character : result) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return result;
}

Account makeAccount(const char* email, const char* givenName, const char* displayName,
                    Bytes userHandle, std::string_view password) {
    return {email,
            givenName,
            displayName,
            std::move(userHandle),
            PasswordHash(password),
            OneTimeCode(randomBytes(20))};
}

} // namespace

AccountStore::AccountStore() {
    // The handles are fixed: passkeys outlive the service's process.
    accounts.push_back(makeAccount("ada@example.org", "Ada", "Ada Lovelace",
                                   {0x8d, 0x1f, 0x60, 0xc3, 0x27, 0xe4, 0x4b, 0x9a, 0xb0, 0x5e,
                                    0x73, 0xd2, 0x16, 0xaf, 0x98, 0x41},
                                   "analytical engine"));
    accounts.push_back(makeAccount("grace@example.org", "Grace", "Grace Hopper",
                                   {0x3c, 0xa7, 0xf9, 0x12, 0x5b, 0xd8, 0x46, 0x0e, 0x97, 0x64,
                                    0xe1, 0x2d, 0xb5, 0x80, 0x7a, 0xcf},
                                   "nanosecond"));
}

Account* AccountStore::findAccount(std::string_view email) {
    const auto account = std::ranges::find(accounts, lowerCase(email), &Account::email);
    return account == accounts.end() ? nullptr : &*account;
}

const Account* AccountStore::find(std::string_view email) const {
    const auto account = std::ranges::find(accounts, lowerCase(email), &Account::email);
    return account == accounts.end() ? nullptr : &*account;
}

SecretCheck AccountStore::checkPassword(std::string_view email, std::string_view password,
                                        AttemptLimiter::Time now) {
    const Account* account = findAccount(email);
    const std::string& name = account ? account->email : nobody;
    if (!limiter.mayTry(name, now))
        return SecretCheck::tooManyTries;
    const Account& compared = account ? *account : accounts.front();
    if (compared.password.matches(password) && account)
        return SecretCheck::right;
    limiter.noteFailure(name, now);
    return SecretCheck::wrong;
}

SecretCheck AccountStore::checkPasswordOrCode(const Account& account, std::string_view password,
                                              std::string_view code, AttemptLimiter::Time now,
                                              OneTimeCode::Time time) {
    if (!limiter.mayTry(account.email, now))
        return SecretCheck::tooManyTries;
    Account* own = findAccount(account.email);
    if (own && (own->code.accept(code, time) || own->password.matches(password)))
        return SecretCheck::right;
    limiter.noteFailure(account.email, now);
    return SecretCheck::wrong;
}

} // namespace kelo::demo
