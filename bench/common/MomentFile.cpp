#include "common/MomentFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <charconv>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace kelo::bench {

namespace {

std::optional<MomentLine> readMoment(std::string_view line) {
    const auto space = line.rfind(' ');
    if (space == std::string_view::npos || space == 0)
        return std::nullopt;
    const std::string_view digits = line.substr(space + 1);
    std::int64_t time = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), time);
    if (error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return MomentLine{std::string(line.substr(0, space)),
                      std::chrono::steady_clock::time_point(std::chrono::nanoseconds(time))};
}

} // namespace

std::vector<MomentLine> readMoments(std::string_view text) {
    std::vector<MomentLine> lines;
    // A last line without its end is still being written.
    for (auto end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        if (auto line = readMoment(text.substr(0, end)))
            lines.push_back(std::move(*line));
        text.remove_prefix(end + 1);
    }
    return lines;
}

std::optional<std::chrono::steady_clock::time_point>
firstMoment(std::span<const MomentLine> lines, std::string_view name,
            std::chrono::steady_clock::time_point notBefore) {
    for (const auto& line : lines)
        if (line.name == name && line.time >= notBefore)
            return line.time;
    return std::nullopt;
}

MomentFile::MomentFile(const std::filesystem::path& path)
    : path(path),
      // Inherited on purpose.
      descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, S_IRUSR | S_IWUSR)) {
    if (!descriptor)
        throw std::runtime_error(path.string() + " cannot be written.");
}

std::map<std::string, std::string> MomentFile::variables() const {
    return {{"KELO_MOMENTS", std::to_string(descriptor.get())}};
}

std::vector<MomentLine> MomentFile::read() const {
    return readMoments(fileText(path));
}

std::string fileText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace kelo::bench
