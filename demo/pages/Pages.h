#pragma once

#include "demo/ServiceContext.h"
#include "demo/http/Http.h"

#include <string>

namespace kelo::demo {

/// What the pages may load: files of the service, and nothing else.
inline constexpr const char* contentPolicy =
    "default-src 'none'; style-src 'self'; script-src 'self'; img-src 'self'; connect-src 'self'; "
    "form-action 'self'; base-uri 'none'; frame-ancestors 'none'";

/// The pages that people see, and the files they are made of.
class Pages {
public:
    /// The context outlives this.
    explicit Pages(ServiceContext& context);

    Reply home(const Request& request);
    Reply login(const Request& request);
    Reply signIn(const Request& request);
    Reply signOut(const Request& request);
    Reply widget(const Request& request);
    /// What the stranger's frame shows. Not found when there is to be none.
    Reply stranger() const;
    Reply notFound() const;

    /// A style sheet, script or picture, by its name in demo/pages.
    Reply asset(const Request& request, const std::string& name) const;

private:
    Reply loginPage(const Request& request, unsigned status, const std::string& email,
                    const std::string& problem);
    std::string passkeyList(const std::string& email) const;

    ServiceContext& context;
};

} // namespace kelo::demo
