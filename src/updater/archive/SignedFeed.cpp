#include "updater/archive/SignedFeed.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "updater/error/UpdateError.h"

#include <algorithm>

namespace kelo::updater {

namespace {

constexpr std::string_view beginning = "<!-- sparkle-signatures:";
constexpr std::string_view ending = "-->";
constexpr std::string_view signatureName = "edSignature:";
constexpr std::string_view lengthName = "length:";
constexpr std::size_t mostSignatures = 8;

[[noreturn]] void refuse(const std::string& cause) {
    throw UpdateError(
        UpdateErrorKind::signature,
        translated("Nothing shows that the list of updates comes from Kelo's publisher, so it was "
                   "not used. Please try again later, or ask the publisher."),
        cause);
}

} // namespace

std::optional<FeedSignatures> signaturesOf(ByteView feed) {
    const std::string_view text(reinterpret_cast<const char*>(feed.data()), feed.size());
    const auto start = text.rfind(beginning);
    if (start == std::string_view::npos)
        return std::nullopt;
    std::string_view lines = trimmed(text.substr(start + beginning.size()));
    if (!lines.ends_with(ending))
        return std::nullopt;
    lines.remove_suffix(ending.size());
    FeedSignatures found{feed.first(start), {}};
    bool coversAll = false;
    while (!lines.empty()) {
        const auto end = std::min(lines.find('\n'), lines.size());
        const std::string_view line = trimmed(lines.substr(0, end));
        lines.remove_prefix(std::min(end + 1, lines.size()));
        if (line.starts_with(lengthName)) {
            coversAll = trimmed(line.substr(lengthName.size())) == std::to_string(start);
        } else if (line.starts_with(signatureName)) {
            const auto signature = parseSignature(line.substr(signatureName.size()));
            if (!signature || found.signatures.size() == mostSignatures)
                return std::nullopt;
            found.signatures.push_back(*signature);
        }
    }
    if (!coversAll || found.signatures.empty())
        return std::nullopt;
    return found;
}

ByteView verifiedPart(ByteView feed, const std::optional<PublicKey>& key) {
    if (!key)
        refuse("no SUPublicEDKey of 32 bytes in the information dictionary");
    const auto found = signaturesOf(feed);
    if (!found)
        refuse("the feed is not signed");
    if (std::ranges::none_of(found->signatures, [&](const Signature& signature) {
            return verifies(*key, signature, found->signedPart);
        }))
        refuse("no signature of the feed is the publisher's");
    return found->signedPart;
}

std::string signatureLines(std::size_t length, const std::vector<std::string>& signatures) {
    std::string lines(beginning);
    for (const auto& signature : signatures)
        lines.append("\n").append(signatureName).append(" ").append(signature);
    return lines.append("\n")
        .append(lengthName)
        .append(" " + std::to_string(length) + "\n")
        .append(ending)
        .append("\n");
}

} // namespace kelo::updater
