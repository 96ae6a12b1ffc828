#include "demo/StateFile.h"

#include "base/Base64.h"
#include "demo/base/AtomicFile.h"
#include "demo/base/ServiceError.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace kelo::demo {
namespace {

using nlohmann::json;
using Time = std::chrono::system_clock::time_point;

constexpr int version = 1;

std::int64_t secondsOf(Time time) {
    return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

Time timeOf(const json& value) {
    constexpr std::int64_t farFuture = 9'000'000'000; // what the clock's type can hold
    if (!value.is_number_integer())
        throw std::invalid_argument("not a time");
    const auto seconds = value.get<std::int64_t>();
    if (seconds < 0 || seconds > farFuture)
        throw std::invalid_argument("a time out of range");
    return Time(std::chrono::seconds(seconds));
}

Bytes bytesOf(const json& value) {
    auto bytes = base64URLDecodeStrict(value.get<std::string>());
    if (!bytes)
        throw std::invalid_argument("not base64url");
    return std::move(*bytes);
}

json write(const Passkey& passkey) {
    return {{"credentialId", base64URLEncode(passkey.credentialId)},
            {"publicKey", base64URLEncode(passkey.publicKey)},
            {"email", passkey.email},
            {"label", passkey.label},
            {"registered", secondsOf(passkey.registered)},
            {"counter", passkey.counter},
            {"backupEligible", passkey.backupEligible}};
}

Passkey readPasskey(const json& value) {
    Passkey passkey{bytesOf(value.at("credentialId")),
                    bytesOf(value.at("publicKey")),
                    value.at("email"),
                    value.at("label"),
                    timeOf(value.at("registered")),
                    0,
                    value.at("backupEligible")};
    const auto& counter = value.at("counter");
    if (!counter.is_number_unsigned() || counter.get<std::uint64_t>() > UINT32_MAX)
        throw std::invalid_argument("a counter out of range");
    passkey.counter = counter.get<std::uint32_t>();
    if (passkey.credentialId.empty() || passkey.publicKey.size() != 64)
        throw std::invalid_argument("a passkey of the wrong size");
    return passkey;
}

json write(const Session& session) {
    return {{"identifier", session.identifier},
            {"email", session.email},
            {"csrfToken", session.csrfToken},
            {"expires", secondsOf(session.expires)}};
}

Session readSession(const json& value) {
    return {value.at("identifier"), value.at("email"), value.at("csrfToken"),
            timeOf(value.at("expires"))};
}

void read(const json& document, PasskeyStore& passkeys, SessionTable& sessions) {
    for (const auto& value : document.at("passkeys")) {
        if (!passkeys.add(readPasskey(value)))
            throw std::invalid_argument("a passkey that comes twice");
    }
    for (const auto& value : document.at("sessions"))
        sessions.restore(readSession(value));
}

} // namespace

StateFile::StateFile(std::optional<std::filesystem::path> path) : path(std::move(path)) {}

void StateFile::load(PasskeyStore& passkeys, SessionTable& sessions) const {
    const auto text = path ? readFileIfPresent(*path) : std::nullopt;
    if (!text)
        return;
    // Filled aside first: a file that turns out damaged in the middle leaves nothing half read.
    PasskeyStore readPasskeys;
    SessionTable readSessions;
    try {
        const auto document = json::parse(*text);
        if (document.at("version") != version)
            throw ServiceError(path->string() +
                               " was written by another version of this service. Give another "
                               "file with --state, or move this one away to start afresh.");
        read(document, readPasskeys, readSessions);
    } catch (const json::exception&) {
        throw ServiceError(path->string() + " is damaged. It was left as it is; move it away to "
                                            "start afresh.");
    } catch (const std::invalid_argument&) {
        throw ServiceError(path->string() + " is damaged. It was left as it is; move it away to "
                                            "start afresh.");
    }
    passkeys = std::move(readPasskeys);
    sessions = std::move(readSessions);
}

void StateFile::save(const PasskeyStore& passkeys, const SessionTable& sessions) const {
    if (!path)
        return;
    json document = {
        {"version", version}, {"passkeys", json::array()}, {"sessions", json::array()}};
    for (const auto& [identifier, passkey] : passkeys.all())
        document["passkeys"].push_back(write(passkey));
    for (const auto& [identifier, session] : sessions.all())
        document["sessions"].push_back(write(session));
    writeFileAtomically(*path, document.dump(1) + "\n", 0600);
}

} // namespace kelo::demo
