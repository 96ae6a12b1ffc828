#include "linux/authorization/PasskeyServices.h"

#include "linux/authorization/LinuxAuthorizationController.h"
#include "linux/authorization/LocalAuthenticator.h"

#include <utility>

namespace kelo::authorization {

PasskeyServices::PasskeyServices(authenticator::PasskeySheetFactory& sheets)
    : authenticator(std::make_unique<LocalAuthenticator>(sheets)) {}

PasskeyServices::~PasskeyServices() = default;

std::shared_ptr<platform::AuthorizationController>
PasskeyServices::makeController(std::vector<platform::AuthorizationRequest> requests) {
    return std::make_shared<LinuxAuthorizationController>(*authenticator, std::move(requests));
}

void PasskeyServices::report(platform::CredentialReport report) {
    authenticator->report(std::move(report));
}

} // namespace kelo::authorization
