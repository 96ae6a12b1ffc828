#include "FuzzInput.h"
#include "base/Base64.h"
#include "base/Failure.h"
#include "passkey/CredentialJson.h"
#include "service/FormEncoding.h"
#include "service/JsonReply.h"

#include <span>

// A reply that should be JSON, and what is made of the values in it for the next request.

using namespace kelo;
using fuzz::require;
using nlohmann::json;

namespace {

/// Tells how deeply a text is nested, without building anything.
class DepthMeter : public nlohmann::json_sax<json> {
public:
    int deepest() const { return deepest_; }

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool key(string_t&) override { return true; }
    bool start_object(std::size_t) override { return enter(); }
    bool start_array(std::size_t) override { return enter(); }
    bool end_object() override { return leave(); }
    bool end_array() override { return leave(); }
    bool parse_error(std::size_t, const std::string&, const json::exception&) override {
        return false;
    }

private:
    bool enter() {
        deepest_ = std::max(deepest_, ++depth);
        return true;
    }
    bool leave() {
        --depth;
        return true;
    }

    int depth = 0;
    int deepest_ = 0;
};

/// Whether the text is an object or array that is not nested too deeply, as the library finds out.
bool isFit(ByteView body) {
    DepthMeter meter;
    return json::sax_parse(body.begin(), body.end(), &meter) && meter.deepest() > 0 &&
           meter.deepest() <= service::deepestJson;
}

/// Throws nothing but the one failure that the caller expects.
std::optional<json> readReply(ByteView body) {
    try {
        return service::parseJson(body);
    } catch (const Failure& refused) {
        require(refused.kind() == FailureKind::invalidJson);
        return std::nullopt;
    }
}

std::string decodedForm(std::string_view text) {
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%') {
            decoded +=
                static_cast<char>(std::stoi(std::string(text.substr(at + 1, 2)), nullptr, 16));
            at += 2;
        } else {
            decoded += text[at];
        }
    }
    return decoded;
}

void examineText(const std::string& text) {
    const auto form = service::formEncode({{"name", text}, {text, "value"}});
    require(form && form->starts_with("name=") && form->ends_with("=value"));
    require(form->find_first_of("+ #\"<>\\\r\n") == std::string::npos);
    const auto middle = form->find('&');
    require(decodedForm(form->substr(5, middle - 5)) == text);
    require(decodedForm(form->substr(middle + 1, form->size() - middle - 7)) == text);
    if (const auto bytes = base64URLDecode(text)) {
        require(base64URLDecodeStrict(base64URLEncode(*bytes)) == bytes);
        require(base64Decode(base64Encode(*bytes)) == bytes);
    }
    if (const auto bytes = base64URLDecodeStrict(text))
        require(base64URLEncode(*bytes) == text && base64URLDecode(text) == bytes);
    if (const auto bytes = base64Decode(text))
        require(base64Encode(*bytes) == text);
}

void examineMembers(const json& value) {
    if (!value.is_object())
        require(!service::stringMember(value, "id"));
    if (!value.is_structured())
        return;
    for (const auto& [name, member] : value.items()) {
        if (value.is_object()) {
            const auto text = service::stringMember(value, name);
            require(text.has_value() == member.is_string() &&
                    (!text || *text == member.get<std::string>()));
            require(service::stringMember(value, name + "?") == std::nullopt ||
                    value.contains(name + "?"));
        }
        if (member.is_string())
            examineText(member.get<std::string>());
        else
            examineMembers(member);
    }
}

void examineCredential(ByteView body, const json& value) {
    const Bytes identifier(body.begin(),
                           body.begin() + std::min<std::ptrdiff_t>(std::ssize(body), 64));
    const json credential =
        json::parse(service::serializeJson(passkey::credentialJson(identifier, value)));
    require(credential.size() == 6 && credential.at("response") == value);
    require(base64URLDecodeStrict(credential.at("id").get<std::string>()) == identifier);
    require(credential.at("rawId") == credential.at("id"));
    require(credential.at("type") == "public-key");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView body(data, size);
    const auto value = readReply(body);
    require(value.has_value() == isFit(body));
    examineText(textOf(body.first(std::min<std::size_t>(size, 64))));
    if (!value)
        return 0;
    examineMembers(*value);
    examineCredential(body, *value);
    return 0;
}
