#include "RoadFixture.h"

#include "component/ScopedMainLoop.h"
#include "unit/authenticator/IndependentVerifier.h"

#include "base/Base64.h"

#include <pwd.h>
#include <unistd.h>

#include <fstream>

namespace kelo {

namespace {

Bytes part(const nlohmann::json& answer, const char* name) {
    return *base64URLDecode(answer.at(name).get<std::string>());
}

} // namespace

RoadFixture::RoadFixture()
    : keyring({"gnome-keyring-daemon", "--foreground", "--components=secrets", "--unlock"},
              {"DBUS_SESSION_BUS_ADDRESS=" + bus.address(), "HOME=" + folder.path().string(),
               "XDG_DATA_HOME=" + folder.path().string(),
               "XDG_RUNTIME_DIR=" + folder.path().string()}) {
    keyring.write("password");
    keyring.closeInput();
    const ScopedMainLoop loop;
    bus.waitForName("org.freedesktop.secrets");
    std::ofstream(folder / "passwords") << ::getpwuid(::getuid())->pw_name << ":open sesame:kelo\n";
}

Child RoadFixture::start(const std::vector<std::string>& moreEnvironment) const {
    std::vector<std::string> environment{
        "DBUS_SESSION_BUS_ADDRESS=" + bus.address(),
        "XDG_DATA_HOME=" + (folder / "data").string(),
        "PAM_MATRIX_PASSWD=" + (folder / "passwords").string(),
        "KELO_GIVEN_CHIP=" + chip.transport(),
        "LC_ALL=C.UTF-8",
    };
    environment.insert(environment.end(), moreEnvironment.begin(), moreEnvironment.end());
    return Child({KELO_PASSKEY_ROAD}, environment);
}

nlohmann::json RoadFixture::answer(const Child& program) {
    std::string line = program.readLine();
    while (line == "asked")
        line = program.readLine();
    return line.empty() ? nlohmann::json() : nlohmann::json::parse(line);
}

nlohmann::json RoadFixture::answerTo(const std::string& verb, const std::string& object) const {
    const Child program = start();
    ask(program, verb, object);
    return answer(program);
}

void RoadFixture::expectAccepted(const nlohmann::json& signedIn, const Bytes& publicKey) const {
    ASSERT_TRUE(signedIn.contains("signature")) << signedIn;
    platform::PlatformAssertionCredential credential;
    credential.rawClientDataJson = part(signedIn, "clientData");
    credential.rawAuthenticatorData = part(signedIn, "data");
    credential.signature = part(signedIn, "signature");
    EXPECT_TRUE(verifyAssertion(credential, publicKey, "localhost", true));
}

nlohmann::json RoadFixture::expectRegistration(const std::string& account) const {
    const Child program = start();
    ask(program, "register", account);
    nlohmann::json registered = answer(program);
    if (!registered.contains("attestation")) {
        ADD_FAILURE() << registered;
        return registered;
    }
    platform::PlatformRegistrationCredential credential;
    credential.rawClientDataJson = part(registered, "clientData");
    credential.rawAttestationObject = part(registered, "attestation");
    const auto verified = verifyRegistration(credential, "localhost");
    EXPECT_TRUE(verified);
    ask(program, "sign", registered["id"]);
    expectAccepted(answer(program), verified ? verified->publicKey : Bytes());
    return registered;
}

void RoadFixture::expectAllSign() const {
    const Child program = start();
    for (const authenticator::CredentialRecord& record : passkeys.all()) {
        Bytes publicKey(record.publicKey.x.begin(), record.publicKey.x.end());
        publicKey.insert(publicKey.end(), record.publicKey.y.begin(), record.publicKey.y.end());
        ask(program, "sign", base64URLEncode(record.credentialId));
        expectAccepted(answer(program), publicKey);
    }
}

} // namespace kelo
