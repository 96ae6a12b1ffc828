#include "publisher/Arguments.h"
#include "publisher/Failure.h"

#include <gmock/gmock.h>

#include <initializer_list>

namespace kelo::publisher {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

Arguments parse(std::vector<const char*> words, std::optional<std::string> variable = {}) {
    return parseArguments(words, variable);
}

void expectRefused(std::vector<const char*> words, const std::string& because) {
    try {
        parse(std::move(words));
        FAIL() << "it was taken";
    } catch (const UsageError& error) {
        EXPECT_THAT(error.what(), HasSubstr(because));
    }
}

} // namespace

TEST(Arguments, NameACommandItsFilesAndOptionsInAnyOrder) {
    const auto arguments = parse({"--key", "k", "generate", "--url", "https://x.example/a", "dir",
                                  "--link", "https://x.example/"});
    EXPECT_EQ(arguments.command, Command::generate);
    EXPECT_EQ(arguments.key, "k");
    EXPECT_THAT(arguments.files, ElementsAre("dir"));
    EXPECT_EQ(arguments.downloadUrl, "https://x.example/a/");
    EXPECT_EQ(arguments.pageUrl, "https://x.example/");
}

TEST(Arguments, TakeTheKeysFileFromTheVariableUnlessOneIsNamed) {
    EXPECT_EQ(parse({"sign", "f"}, "variable").key, "variable");
    EXPECT_EQ(parse({"sign", "f", "--key", "named"}, "variable").key, "named");
    EXPECT_EQ(parse({"sign", "f"}).key, "");
}

TEST(Arguments, AskForHelpWhereverTheWordStands) {
    EXPECT_EQ(parse({"--help"}).command, Command::help);
    EXPECT_EQ(parse({"sign", "-h"}).command, Command::help);
}

TEST(Arguments, ThatMakeNoSenseAreRefusedWithAHint) {
    expectRefused({}, "Name a command");
    expectRefused({"publish"}, "no command \"publish\"");
    expectRefused({"sign"}, "sign [--key FILE] ARCHIVE");
    expectRefused({"sign", "a", "b"}, "sign [--key FILE] ARCHIVE");
    expectRefused({"verify", "feed"}, "FEED ARCHIVE");
    expectRefused({"sign", "f", "--password", "x"}, "no option \"--password\"");
    expectRefused({"sign", "f", "--key"}, "--key needs a value");
    expectRefused({"sign", "f", "--key", ""}, "--key needs a value");
    expectRefused({"generate", "d", "--url", "http://x.example"}, "https://");
    expectRefused({"generate", "d", "--link", "x.example"}, "https://");
}

TEST(Arguments, HelpNamesEveryCommandAndOption) {
    for (const auto* word : {"keygen", "sign", "generate", "verify", "--key", "--public-key",
                             "--url", "--link", "KELO_APPCAST_KEY"})
        EXPECT_THAT(helpText(), HasSubstr(word));
}

TEST(Arguments, NameTheNextKeyAndWhetherToReplace) {
    const auto plain = parse({"generate", "releases"});
    EXPECT_EQ(plain.nextKey, "");
    EXPECT_FALSE(plain.replace);
    const auto both = parse({"generate", "--replace", "releases", "--next-key", "new.key"});
    EXPECT_EQ(both.nextKey, "new.key");
    EXPECT_TRUE(both.replace);
    EXPECT_THAT(both.files, ElementsAre("releases"));
    expectRefused({"generate", "releases", "--next-key"}, "--next-key needs a value");
}

} // namespace kelo::publisher
