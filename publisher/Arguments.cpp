#include "publisher/Arguments.h"

#include "publisher/Failure.h"

#include "base/Url.h"

#include <array>
#include <string_view>

namespace kelo::publisher {

namespace {

struct CommandForm {
    std::string_view word;
    Command command;
    std::size_t files;
    std::string_view use;
};

constexpr std::array<CommandForm, 4> forms{{
    {"keygen", Command::keygen, 0, "keygen --key FILE"},
    {"sign", Command::sign, 1, "sign [--key FILE] ARCHIVE"},
    {"generate", Command::generate, 1,
     "generate [--key FILE] [--next-key FILE] [--url URL] [--link URL] [--replace] FOLDER"},
    {"verify", Command::verify, 2, "verify [--public-key KEY | --key FILE] FEED ARCHIVE"},
}};

const CommandForm& formOf(std::string_view word) {
    for (const auto& form : forms) {
        if (form.word == word)
            return form;
    }
    throw UsageError("There is no command \"" + std::string(word) +
                     "\"; there are keygen, sign, generate and verify.");
}

std::string secureUrl(std::string_view option, std::string text) {
    const auto url = Url::parse(text);
    if (!url || url->scheme() != "https")
        throw UsageError(std::string(option) + " needs a URL that begins with https://, not \"" +
                         text + "\".");
    return text;
}

class Reader {
public:
    explicit Reader(std::span<const char* const> words) : words(words) {}

    bool atEnd() const { return index == words.size(); }
    std::string next() { return words[index++]; }
    std::string valueOf(const std::string& option) {
        if (atEnd() || *words[index] == '\0')
            throw UsageError(option + " needs a value.");
        return next();
    }

private:
    std::span<const char* const> words;
    std::size_t index = 0;
};

void readOption(const std::string& option, Reader& reader, Arguments& arguments) {
    if (option == "--key") {
        arguments.key = reader.valueOf(option);
    } else if (option == "--next-key") {
        arguments.nextKey = reader.valueOf(option);
    } else if (option == "--replace") {
        arguments.replace = true;
    } else if (option == "--public-key") {
        arguments.publicKey = reader.valueOf(option);
    } else if (option == "--url") {
        arguments.downloadUrl = secureUrl(option, reader.valueOf(option));
        if (!arguments.downloadUrl.ends_with('/'))
            arguments.downloadUrl += '/';
    } else if (option == "--link") {
        arguments.pageUrl = secureUrl(option, reader.valueOf(option));
    } else {
        throw UsageError("There is no option \"" + option + "\".");
    }
}

} // namespace

Arguments parseArguments(std::span<const char* const> words,
                         const std::optional<std::string>& keyVariable) {
    Arguments arguments;
    arguments.key = keyVariable.value_or("");
    Reader reader(words);
    std::vector<std::string> plain;
    while (!reader.atEnd()) {
        const std::string word = reader.next();
        if (word == "--help" || word == "-h")
            return {};
        if (word.starts_with("-"))
            readOption(word, reader, arguments);
        else
            plain.push_back(word);
    }
    if (plain.empty())
        throw UsageError("Name a command: keygen, sign, generate or verify.");
    const CommandForm& form = formOf(plain.front());
    arguments.command = form.command;
    arguments.files.assign(plain.begin() + 1, plain.end());
    if (arguments.files.size() != form.files)
        throw UsageError("Usage: kelo-appcast " + std::string(form.use));
    return arguments;
}

std::string helpText() {
    std::string text =
        "Signs releases of Kelo and writes the feed that its updater reads.\n\nUsage:\n";
    for (const auto& form : forms)
        text += "  kelo-appcast " + std::string(form.use) + "\n";
    return text + R"(
Commands:
  keygen    write a new private key to FILE and print the public key, which
            is the value of KELO_UPDATE_PUBLIC_KEY when you build Kelo
  sign      print an archive's signature and length
  generate  write and sign FOLDER/appcast.xml for the packages in the folder
            (kelo-VERSION.tar.zst, kelo-VERSION.deb) with their release notes
            (kelo-VERSION.md or kelo-VERSION.txt)
  verify    check the feed's signature, and an archive's signature and length
            in it, as Kelo does

Options:
  --key FILE        private key (default: the file that the environment
                    variable KELO_APPCAST_KEY names)
  --next-key FILE   private key that will take its place: the first release
                    that was built with it is signed with the present key,
                    those after it with the next one, and the feed with both
  --replace         sign packages again that were changed under their names
  --public-key KEY  public key, as printed by keygen
  --url URL         folder that the packages are downloaded from, https
                    (default: the folder of the feed that the packages name)
  --link URL        page for users whose copy cannot update itself, https
  -h, --help        show this help, then exit
)";
}

} // namespace kelo::publisher
