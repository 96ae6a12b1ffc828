#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelo::http {

/// Decodes a chunked body (RFC 9112, section 7.1). Strict: anything that is not well formed is an
/// error, and only the last chunk with its trailer ends the body. Chunk extensions and trailer
/// fields are skipped.
class ChunkedBody {
public:
    enum class State { more, finished, malformed };

    /// Decodes the next bytes of the connection and appends their content to the body.
    State take(std::string_view bytes, Bytes& body);

private:
    enum class Expects { sizeLine, data, dataEnd, trailer };

    bool takeLine();
    bool takeSize();

    Expects expects = Expects::sizeLine;
    std::string line;
    std::uint64_t left = 0;
    bool done = false;
};

} // namespace kelo::http
