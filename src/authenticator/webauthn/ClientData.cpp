#include "authenticator/webauthn/ClientData.h"

#include "base/Base64.h"
#include "base/JsonString.h"

#include <string_view>

namespace kelo::webauthn {

namespace {

std::string quoted(std::string_view text) {
    std::string json;
    appendJsonString(json, text);
    return json;
}

} // namespace

std::string clientDataJson(const ClientData& clientData) {
    std::string json = "{\"type\":" + quoted(clientData.type);
    json += ",\"challenge\":" + quoted(base64URLEncode(clientData.challenge));
    json += ",\"origin\":" + quoted(clientData.origin);
    json += ",\"crossOrigin\":";
    json += clientData.crossOrigin ? "true" : "false";
    if (clientData.topOrigin)
        json += ",\"topOrigin\":" + quoted(*clientData.topOrigin);
    if (!clientData.furtherMembers.empty())
        json += "," + clientData.furtherMembers;
    json += "}";
    return json;
}

} // namespace kelo::webauthn
