#pragma once

#include "base/Bytes.h"
#include "updater/archive/Signature.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::updater {

/// The signatures at a feed's end, and what they cover: everything before them. A feed may have one
/// for each of several keys while its publisher changes from one to the next.
struct FeedSignatures {
    ByteView signedPart;
    std::vector<Signature> signatures;
};

/// Nothing if there are none at the end, or if they do not cover everything before them.
std::optional<FeedSignatures> signaturesOf(ByteView feed);

/// The part of the feed that the key's owner signed. Throws an UpdateError if there is none. Read
/// nothing else of the feed.
ByteView verifiedPart(ByteView feed, const std::optional<PublicKey>& key);

/// The lines to be put behind a feed of this length: one signature for each of the keys, in Base64.
std::string signatureLines(std::size_t length, const std::vector<std::string>& signatures);

} // namespace kelo::updater
