#include "FuzzInput.h"
#include "updater/archive/SignedFeed.h"
#include "updater/error/UpdateError.h"

#include <span>
#include <string>

// A feed from anybody, with signatures at its end. The key has signed one text and was thrown away,
// so nothing but that text may ever come out as the publisher's.

using namespace kelo;
using fuzz::require;

namespace {

constexpr std::string_view marker = "<!-- sparkle-signatures:";
constexpr std::string_view signedText =
    "<rss version=\"2.0\"><channel><item><title>1.1</title></item></channel></rss>\n";
constexpr const char* signature =
    "JlnRJ/zzieJubMDI8yUJIaJbtaN5phIHtumxl6rip2F3e9i4bHM3xuf2hGHVuQJz3f/eH0jiPPb92Luy4VOQBQ==";
constexpr const char* publicKey = "xU7J3C9dFlK00bQQ3q0Vi4FazAERtCp2QSv35aEB5QU=";
constexpr std::size_t mostSignatures = 8;

std::string_view asText(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

ByteView asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

void examine(ByteView feed, const updater::FeedSignatures& found) {
    require(!found.signatures.empty() && found.signatures.size() <= mostSignatures);
    require(found.signedPart.data() == feed.data() && found.signedPart.size() < feed.size());
    // The lines are the last ones, and say themselves how much is before them.
    const std::string_view lines = asText(feed).substr(found.signedPart.size());
    require(lines.starts_with(marker) && lines.rfind(marker) == 0);
    require(lines.find(std::to_string(found.signedPart.size())) != std::string_view::npos);
}

std::string_view verified(ByteView feed) {
    static const auto key = updater::parsePublicKey(publicKey);
    require(key.has_value());
    return asText(updater::verifiedPart(feed, key));
}

/// What a publisher puts behind a feed is found again, whatever the feed is.
void examineWritten(std::string_view text) {
    const std::string feed =
        std::string(text) + updater::signatureLines(text.size(), {signature, signature});
    const auto found = updater::signaturesOf(asBytes(feed));
    require(found && asText(found->signedPart) == text);
    require(found->signatures.size() == 2 &&
            found->signatures.front() == updater::parseSignature(signature));
}

bool keyHasSigned() {
    const std::string feed =
        std::string(signedText) + updater::signatureLines(signedText.size(), {signature});
    return verified(asBytes(feed)) == signedText;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isUsable = keyHasSigned();
    require(isUsable);
    const ByteView feed(data, size);
    const auto found = updater::signaturesOf(feed);
    if (found)
        examine(feed, *found);
    try {
        require(verified(feed) == signedText && found);
    } catch (const updater::UpdateError& refused) {
        require(refused.kind() == updater::UpdateErrorKind::signature);
    }
    examineWritten(asText(feed));
    return 0;
}
