#pragma once

#include "base/Bytes.h"
#include "demo/accounts/AttemptLimiter.h"
#include "demo/accounts/OneTimeCode.h"
#include "demo/accounts/PasswordHash.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelo::demo {

struct Account {
    std::string email;
    std::string givenName;
    std::string displayName;
    Bytes userHandle; ///< what passkeys know the account by; says nothing about its owner
    PasswordHash password;
    OneTimeCode code;
};

enum class SecretCheck { right, wrong, tooManyTries };

/// The built-in accounts, and the only place that looks at their passwords and codes.
class AccountStore {
public:
    AccountStore();

    /// Null if there is none. Letter case in the address does not matter.
    const Account* find(std::string_view email) const;

    /// Also checks an address without an account, so that it takes as long as a wrong password.
    SecretCheck checkPassword(std::string_view email, std::string_view password,
                              AttemptLimiter::Time now);

    /// True if the password or the code is right. Counts as one attempt.
    SecretCheck checkPasswordOrCode(const Account& account, std::string_view password,
                                    std::string_view code, AttemptLimiter::Time now,
                                    OneTimeCode::Time time);

private:
    Account* findAccount(std::string_view email);

    std::vector<Account> accounts;
    AttemptLimiter limiter;
};

} // namespace kelo::demo
