#include "TarWriter.h"

#include "FuzzInput.h"

#include <cstdio>

namespace kelo::fuzz {

namespace {

constexpr std::size_t blockSize = 512;
constexpr std::size_t checksumPlace = 148;
constexpr std::size_t checksumSize = 8;
constexpr std::size_t magicPlace = 257;

void put(std::string& block, std::size_t at, std::size_t room, std::string_view text) {
    text = text.substr(0, room);
    block.replace(at, text.size(), text);
}

std::string octal(std::uint64_t number, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%0*llo", digits, static_cast<unsigned long long>(number));
    return text;
}

void mendChecksum(std::string& archive, std::size_t start) {
    archive.replace(start + checksumPlace, checksumSize, checksumSize, ' ');
    unsigned sum = 0;
    for (std::size_t i = 0; i < blockSize; ++i)
        sum += static_cast<unsigned char>(archive[start + i]);
    put(archive, start + checksumPlace, checksumSize, octal(sum, 6) + '\0' + ' ');
}

struct Entry {
    char type = '0';
    std::string_view permissions = "644";
    std::string_view path;
    std::string_view target;
    std::string_view content;
};

void append(std::string& archive, const Entry& entry) {
    std::string header(blockSize, '\0');
    put(header, 0, 100, entry.path);
    put(header, 100, 7, entry.permissions);
    put(header, 108, 7, "0000000");
    put(header, 116, 7, "0000000");
    put(header, 124, 11, octal(entry.content.size(), 11));
    put(header, 136, 11, octal(0, 11));
    header[156] = entry.type;
    put(header, 157, 100, entry.target);
    put(header, magicPlace, 8, std::string_view("ustar\00000", 8));
    mendChecksum(header, 0);
    archive += header;
    archive += entry.content;
    archive.resize((archive.size() + blockSize - 1) / blockSize * blockSize);
}

/// "27 path=kelo/other\n": the number counts its own digits.
std::string paxRecord(std::string_view text) {
    std::size_t length = text.size() + 2;
    length += std::to_string(length + std::to_string(length).size()).size();
    return std::to_string(length) + ' ' + std::string(text) + '\n';
}

void appendLine(std::string& archive, std::string_view line) {
    FuzzInput input(line);
    const char kind = static_cast<char>(input.takeByte());
    input.takeByte();
    Entry extra{kind, "644", "././@LongLink", "", input.rest()};
    if (kind == 'L' || kind == 'K')
        return append(archive, extra);
    const std::string record = paxRecord(input.rest());
    extra.content = record;
    if (kind == 'x')
        return append(archive, extra);
    const std::string_view permissions = input.takeUntil(' ');
    const std::string_view path = input.takeUntil('>');
    constexpr std::string_view letters = "fhlcbdp";
    const auto number = letters.find(kind);
    // Another letter is taken as it is: readers know more types than these.
    Entry entry{number == std::string_view::npos ? kind : static_cast<char>('0' + number),
                permissions, path, "", ""};
    if (kind == 'l' || kind == 'h')
        entry.target = input.rest();
    else
        entry.content = input.rest();
    append(archive, entry);
}

} // namespace

std::string tarOf(std::string_view description) {
    std::string archive;
    FuzzInput input(description);
    while (!input.isEmpty())
        appendLine(archive, input.takeLine());
    archive.append(2 * blockSize, '\0');
    return archive;
}

std::string withChecksums(std::string_view archive) {
    std::string mended(archive);
    for (std::size_t at = 0; at + blockSize <= mended.size(); at += blockSize)
        if (mended.compare(at + magicPlace, 5, "ustar") == 0)
            mendChecksum(mended, at);
    return mended;
}

} // namespace kelo::fuzz
