#pragma once

#include "demo/RegistrationApi.h"
#include "demo/ServiceContext.h"
#include "demo/SignInApi.h"
#include "demo/http/Http.h"
#include "demo/pages/Gallery.h"
#include "demo/pages/Pages.h"

#include <functional>
#include <map>
#include <string>

namespace kelo::demo {

/// The whole service: finds the handler of a request, and adds to every response the headers by
/// which a careful site restricts browsers.
class Service {
public:
    /// The context must outlive this.
    explicit Service(ServiceContext& context);

    /// Serves the pages below /gallery/ from now on. It must outlive this.
    void show(const Gallery& gallery);

    Reply answer(const Request& request);

private:
    using Handler = std::function<Reply(const Request&)>;

    void routePages();
    void routeApi();
    Reply route(const Request& request);
    bool isForeign(const Request& request) const;
    bool isOtherHost(const Request& request) const;

    ServiceContext& context;
    Pages pages;
    SignInApi signIn;
    RegistrationApi registration;
    std::map<std::string, std::map<std::string, Handler>> routes; ///< by path, then method
};

} // namespace kelo::demo
