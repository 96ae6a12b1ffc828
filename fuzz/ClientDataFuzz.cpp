#include "FuzzInput.h"
#include "authenticator/webauthn/ClientData.h"
#include "base/Base64.h"
#include "base/Utf8.h"

#include <nlohmann/json.hpp>

// What is signed for the service. The input's parts are separated by the byte 0xFF, which no text
// has: a byte of flags, the type, the challenge, the origin, the top origin, further members.

using namespace kelo;
using fuzz::require;
using Json = nlohmann::ordered_json;

namespace {

constexpr char separator = '\xFF';

std::string takeText(fuzz::FuzzInput& input) {
    const std::string_view text = input.takeUntil(separator);
    return isWellFormedUtf8(text) ? std::string(text) : "";
}

/// Members that may follow the others: none of them is there already, and none is written with
/// blanks, which the library would leave out.
Json furtherMembersFrom(fuzz::FuzzInput& input) {
    Json members = Json::parse("{" + std::string(input.rest()) + "}", nullptr, false);
    if (!members.is_object())
        return Json::object();
    for (const char* taken : {"type", "challenge", "origin", "crossOrigin", "topOrigin"})
        members.erase(taken);
    return members;
}

std::string withoutBraces(const Json& members) {
    const std::string text = members.dump();
    return text.substr(1, text.size() - 2);
}

/// What the standard's template must parse to.
Json expectedOf(const webauthn::ClientData& clientData, const Json& furtherMembers) {
    Json expected = {{"type", clientData.type},
                     {"challenge", base64URLEncode(clientData.challenge)},
                     {"origin", clientData.origin},
                     {"crossOrigin", clientData.crossOrigin}};
    if (clientData.topOrigin)
        expected["topOrigin"] = *clientData.topOrigin;
    for (const auto& [name, value] : furtherMembers.items())
        expected[name] = value;
    return expected;
}

bool isControl(unsigned char c) {
    return c < 0x20;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const std::string_view flags = input.takeUntil(separator);
    webauthn::ClientData clientData;
    clientData.crossOrigin = flags.find('c') != std::string_view::npos;
    clientData.type = takeText(input);
    clientData.challenge = bytesOf(input.takeUntil(separator));
    clientData.origin = takeText(input);
    if (std::string top = takeText(input); flags.find('t') != std::string_view::npos)
        clientData.topOrigin = std::move(top);
    const Json furtherMembers = furtherMembersFrom(input);
    clientData.furtherMembers = withoutBraces(furtherMembers);

    const std::string text = webauthn::clientDataJson(clientData);
    const Json expected = expectedOf(clientData, furtherMembers);
    require(std::ranges::none_of(text, isControl));
    // Also compares the order of the members.
    require(Json::parse(text, nullptr, false) == expected);
    const auto challenge = expected["challenge"].get<std::string>();
    require(base64URLDecodeStrict(challenge) == clientData.challenge);
    // The two writers agree on every text but controls, for which JSON has several spellings.
    const auto hasControl = [](const std::string& part) {
        return std::ranges::any_of(part, isControl);
    };
    if (!hasControl(clientData.type) && !hasControl(clientData.origin) &&
        !hasControl(clientData.topOrigin.value_or("")))
        require(text == expected.dump());
    return 0;
}
