#include "FuzzInput.h"
#include "base/ShownText.h"
#include "base/Utf8.h"
#include "updater/notes/NotesReader.h"

#include <algorithm>
#include <string>

// Release notes from anybody. The first byte says in which format the rest is.

using namespace kelo;
using fuzz::require;
using updater::NotesFormat;
using updater::Paragraph;
using updater::TextRun;

namespace {

constexpr std::size_t mostText = std::size_t(64) * 1024 + 64;

NotesFormat formatOf(std::uint8_t letter) {
    if (letter == 'm')
        return NotesFormat::markdown;
    return letter == 't' ? NotesFormat::plainText : NotesFormat::html;
}

bool isControl(unsigned char c) {
    return c < 0x20 || c == 0x7f;
}

std::string textOf(const Paragraph& paragraph) {
    std::string text;
    for (const TextRun& run : paragraph.runs)
        text += run.text;
    return text;
}

void examine(const Paragraph& paragraph) {
    require(!paragraph.runs.empty());
    const TextRun* before = nullptr;
    for (const TextRun& run : paragraph.runs) {
        require(!run.text.empty() && isWellFormedUtf8(run.text));
        require(!before || before->strong != run.strong || before->emphasized != run.emphasized ||
                before->code != run.code || before->link != run.link);
        require(run.link.empty() || run.link.starts_with("https://"));
        before = &run;
    }
    const std::string text = textOf(paragraph);
    require(withoutHidden(text) == text);
    if (paragraph.kind == updater::ParagraphKind::code) {
        require(!text.ends_with('\n'));
        return;
    }
    require(std::ranges::none_of(text, isControl));
    require(!text.starts_with(' ') && !text.ends_with(' '));
    require(text.find("  ") == std::string::npos);
}

/// Whether the letters come in the same order in the source, which may have more.
bool comesFrom(std::string_view letters, std::string_view source) {
    for (const char letter : letters) {
        if (letter == ' ')
            continue;
        const auto at = source.find(letter);
        if (at == std::string_view::npos)
            return false;
        source.remove_prefix(at + 1);
    }
    return true;
}

/// What is shown of plain text: everything but blanks, controls and direction marks.
std::string lettersOf(std::string_view text) {
    std::string letters;
    for (const char c : withoutHidden(text))
        if (c != ' ' && !isControl(static_cast<unsigned char>(c)))
            letters += c;
    return letters;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const NotesFormat format = formatOf(input.takeByte());
    const std::string_view text = input.rest();
    const updater::ReleaseNotes notes = updater::readReleaseNotes(text, format);
    std::string all;
    for (const Paragraph& paragraph : notes) {
        examine(paragraph);
        all += textOf(paragraph);
    }
    require(all.size() <= mostText);
    if (format != NotesFormat::plainText || !isWellFormedUtf8(text))
        return 0;
    require(comesFrom(all, text));
    if (size < updater::notesLimit / 64)
        require(lettersOf(all) == lettersOf(text));
    return 0;
}
