#include "linux/inventory/Listing.h"

#include "base/Base64.h"
#include "base/ShownText.h"
#include "base/Translation.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <vector>

namespace kelo::inventory {

namespace {

using authenticator::CredentialRecord;
using authenticator::KeyKeeper;
using Json = nlohmann::ordered_json;

constexpr std::size_t fewestDigits = 8;

std::string hexadecimal(const Bytes& bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

std::string written(std::chrono::sys_seconds time, const char* format, bool isLocal) {
    const auto seconds = static_cast<gint64>(time.time_since_epoch().count());
    const gobject::GDateTimePointer date(isLocal ? g_date_time_new_from_unix_local(seconds)
                                                 : g_date_time_new_from_unix_utc(seconds));
    if (!date)
        return "?";
    const gobject::GText text(g_date_time_format(date.get(), format));
    return text ? text.get() : "?";
}

std::string day(std::chrono::sys_seconds time) {
    return written(time, "%Y-%m-%d", true);
}

Json instant(const std::optional<std::chrono::sys_seconds>& time) {
    return time ? Json(written(*time, "%Y-%m-%dT%H:%M:%SZ", false)) : Json(nullptr);
}

using Row = std::array<std::string, 7>;

Row rowOf(const CredentialRecord& passkey, std::span<const CredentialRecord> all) {
    return {nameOf(passkey, all),
            shownName(passkey.accountName),
            passkey.relyingPartyIdentifier,
            day(passkey.created),
            passkey.lastUsed ? day(*passkey.lastUsed) : translated("never"),
            passkey.keeper == KeyKeeper::chip ? translated("security chip")
                                              : translated("software"),
            passkey.accepted ? translated("yes") : translated("not yet")};
}

std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(g_utf8_strlen(text.c_str(), -1));
}

const char* wordOf(Finding::State state) {
    switch (state) {
    case Finding::State::good:
        return "good";
    case Finding::State::notice:
        return "notice";
    case Finding::State::trouble:
        break;
    }
    return "trouble";
}

const char* signOf(Finding::State state) {
    switch (state) {
    case Finding::State::good:
        return "✓";
    case Finding::State::notice:
        return "–";
    case Finding::State::trouble:
        break;
    }
    return "✗";
}

} // namespace

std::string nameOf(const CredentialRecord& passkey, std::span<const CredentialRecord> all) {
    const std::string whole = hexadecimal(passkey.credentialId);
    for (std::size_t digits = fewestDigits; digits < whole.size(); ++digits) {
        const std::string name = whole.substr(0, digits);
        const auto isCalledSo = [&](const CredentialRecord& other) {
            return hexadecimal(other.credentialId).starts_with(name);
        };
        if (std::ranges::count_if(all, isCalledSo) <= 1)
            return name;
    }
    return whole;
}

std::string tableOf(std::span<const CredentialRecord> all) {
    if (all.empty())
        return translated("There is no passkey on this computer.") + "\n";
    std::vector<Row> rows{{translated("Name"), translated("Account"), translated("Service"),
                           translated("Made"), translated("Last used"), translated("Kept in"),
                           translated("Accepted")}};
    for (const CredentialRecord& passkey : all)
        rows.push_back(rowOf(passkey, all));
    std::string table;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t column = 0; column < row.size(); ++column) {
            std::size_t width = 0;
            for (const Row& other : rows)
                width = std::max(width, widthOf(other[column]));
            line += row[column];
            if (column + 1 < row.size())
                line.append(width - widthOf(row[column]) + 2, ' ');
        }
        table += line + "\n";
    }
    return table;
}

std::string reportOf(std::span<const Finding> findings) {
    std::string report;
    for (const Finding& finding : findings)
        report += std::string(signOf(finding.state)) + " " + finding.title + ": " +
                  finding.sentence + "\n";
    return report;
}

std::string jsonOf(std::span<const CredentialRecord> all) {
    Json list = Json::array();
    for (const CredentialRecord& passkey : all)
        list.push_back({{"name", nameOf(passkey, all)},
                        {"identifier", base64URLEncode(passkey.credentialId)},
                        {"account", passkey.accountName},
                        {"service", passkey.relyingPartyIdentifier},
                        {"made", instant(passkey.created)},
                        {"lastUsed", instant(passkey.lastUsed)},
                        {"keptIn", passkey.keeper == KeyKeeper::chip ? "chip" : "software"},
                        {"accepted", passkey.accepted},
                        {"refusals", passkey.refusals}});
    return Json{{"passkeys", list}}.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string jsonOf(std::span<const Finding> findings) {
    Json list = Json::array();
    for (const Finding& finding : findings)
        list.push_back({{"name", finding.name},
                        {"state", wordOf(finding.state)},
                        {"sentence", finding.sentence}});
    return Json{{"findings", list}}.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace kelo::inventory
