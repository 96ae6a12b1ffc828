#include "linux/http/ChunkedBody.h"

#include <algorithm>
#include <charconv>

namespace kelo::http {

namespace {
constexpr std::size_t longestLine = 8 * 1024;
}

ChunkedBody::State ChunkedBody::take(std::string_view bytes, Bytes& body) {
    while (!bytes.empty() && !done) {
        if (expects == Expects::data) {
            const auto count =
                static_cast<std::size_t>(std::min<std::uint64_t>(left, bytes.size()));
            body.insert(body.end(), bytes.begin(),
                        bytes.begin() + static_cast<std::ptrdiff_t>(count));
            bytes.remove_prefix(count);
            left -= count;
            if (left == 0)
                expects = Expects::dataEnd;
            continue;
        }
        line += bytes.front();
        bytes.remove_prefix(1);
        if (line.size() > longestLine)
            return State::malformed;
        if (line.ends_with('\n') && !takeLine())
            return State::malformed;
    }
    return done ? State::finished : State::more;
}

bool ChunkedBody::takeLine() {
    if (!line.ends_with("\r\n"))
        return false;
    line.resize(line.size() - 2);
    bool good = true;
    if (expects == Expects::sizeLine) {
        good = takeSize();
    } else if (expects == Expects::trailer) {
        done = line.empty();
    } else {
        good = line.empty();
        expects = Expects::sizeLine;
    }
    line.clear();
    return good;
}

bool ChunkedBody::takeSize() {
    const auto [end, error] =
        std::from_chars(line.data(), line.data() + line.size(), left, /*base=*/16);
    if (error != std::errc())
        return false;
    const auto rest = std::string_view(line).substr(static_cast<std::size_t>(end - line.data()));
    const auto extension = rest.find_first_not_of(" \t");
    if (extension != std::string_view::npos && rest[extension] != ';')
        return false;
    expects = left == 0 ? Expects::trailer : Expects::data;
    return true;
}

} // namespace kelo::http
