#pragma once

#include "demo/ServiceContext.h"
#include "demo/http/Http.h"

#include <map>
#include <string>

namespace kelo::demo {

/// Signs a user in with a passkey: options, CSRF token, callback.
class SignInApi {
public:
    /// The context must outlive this.
    explicit SignInApi(ServiceContext& context);

    Reply options(const Request& request);
    Reply csrf(const Request& request);
    Reply callback(const Request& request);

private:
    using Form = std::map<std::string, std::string>;

    std::string checkAssertion(const std::string& assertion);
    Reply answerCallback(const Request& request, const Form& form, const std::string& reason,
                         const std::string& email);

    ServiceContext& context;
};

} // namespace kelo::demo
