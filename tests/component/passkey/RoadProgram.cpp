#include "component/ScopedMainLoop.h"

#include "base/Base64.h"
#include "base/Failure.h"
#include "fakes/authenticator/FakePasskeySheet.h"
#include "linux/authorization/PasskeyServices.h"
#include "linux/startup/OwnVariables.h"
#include "platform/Application.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <string>

// The whole authenticator as Kelo has it, as a process of its own. Only the sheet is a stand-in,
// which types the password. It reads its work from the standard input, a line at a time:
//   register ACCOUNT   makes a passkey for the account
//   sign IDENTIFIER    signs with the passkey of this credential id, in base64url
// and answers each with a line: first "asked", when the user has been asked for the password, then
// an object with the parts of the credential in base64url, or with the sentence of the failure.

namespace kelo {

namespace {

class Listener final : public platform::AuthorizationControllerDelegate {
public:
    void didCompleteWithAuthorization(platform::AuthorizationController&,
                                      platform::Authorization outcome) override {
        if (const auto* made =
                std::get_if<platform::PlatformRegistrationCredential>(&outcome.credential)) {
            answer = {{"id", base64URLEncode(made->credentialId)},
                      {"clientData", base64URLEncode(made->rawClientDataJson)},
                      {"attestation", base64URLEncode(*made->rawAttestationObject)}};
            return;
        }
        const auto& signedIn = std::get<platform::PlatformAssertionCredential>(outcome.credential);
        answer = {{"id", base64URLEncode(signedIn.credentialId)},
                  {"clientData", base64URLEncode(signedIn.rawClientDataJson)},
                  {"data", base64URLEncode(*signedIn.rawAuthenticatorData)},
                  {"signature", base64URLEncode(*signedIn.signature)}};
    }
    void didCompleteWithError(platform::AuthorizationController&,
                              std::exception_ptr failure) override {
        try {
            std::rethrow_exception(failure);
        } catch (const Failure& known) {
            answer = {{"failure", known.localizedDescription()}};
        }
    }
    nlohmann::json answer;
};

platform::AuthorizationRequest requestFor(const std::string& verb, const std::string& object) {
    const platform::PlatformPublicKeyCredentialProvider provider("localhost");
    if (verb == "register")
        return provider.createCredentialRegistrationRequest(bytesOf("creation challenge"), object,
                                                            bytesOf(object));
    auto request = provider.createCredentialAssertionRequest(bytesOf("assertion challenge"));
    request.allowedCredentials = {{{*base64URLDecode(object)}}};
    return request;
}

nlohmann::json perform(authorization::PasskeyServices& services,
                       platform::AuthorizationRequest request) {
    const auto listener = std::make_shared<Listener>();
    std::vector<platform::AuthorizationRequest> requests;
    requests.push_back(std::move(request));
    const auto controller = services.makeController(std::move(requests));
    controller->setDelegate(listener);
    controller->performRequests();
    ScopedMainLoop::runUntil([&] { return !listener->answer.is_null(); });
    return listener->answer;
}

void run() {
    startup::quietChipLibrary();
    const ScopedMainLoop loop;
    fakes::SheetScript person;
    person.whenAsked = [&] {
        std::cout << "asked" << std::endl;
        person.answers = {"open sesame"};
    };
    fakes::FakePasskeySheetFactory sheets(person);
    authorization::PasskeyServices services(sheets);
    for (std::string verb, object; std::cin >> verb >> object;)
        std::cout << perform(services, requestFor(verb, object)).dump() << std::endl;
    dropSpawnedTasks();
}

} // namespace

} // namespace kelo

int main() {
    kelo::run();
}
