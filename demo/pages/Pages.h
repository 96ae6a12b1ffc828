#pragma once

#include "demo/ServiceContext.h"
#include "demo/http/Http.h"

#include <string>

namespace kelo::demo {

/// The content security policy of the pages: only files of the service.
inline constexpr const char* contentPolicy =
    "default-src 'none'; style-src 'self'; script-src 'self'; img-src 'self'; connect-src 'self'; "
    "form-action 'self'; base-uri 'none'; frame-ancestors 'none'";

/// The pages for people, and the files they load.
class Pages {
public:
    /// The context must outlive this.
    explicit Pages(ServiceContext& context);

    Reply home(const Request& request);
    Reply login(const Request& request);
    Reply signIn(const Request& request);
    Reply signOut(const Request& request);
    Reply widget(const Request& request);
    /// The content of the cross-origin frame. Not found if there is to be none.
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
