#include "component/ScopedVariable.h"
#include "component/webkit/WebKitFixture.h"
#include "linux/webkit/content/UserLanguages.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> languagesOf(std::vector<const char*> names) {
    names.push_back(nullptr);
    return webkit::languagesNamed(names.data());
}

/// What a person has chosen by the environment, as long as this object lives.
struct Chosen {
    ScopedVariable language;
    ScopedVariable all;
    ScopedVariable messages{"LC_MESSAGES", std::nullopt};
    ScopedVariable standard;

    Chosen(std::optional<std::string> language, std::optional<std::string> all,
           std::optional<std::string> standard = std::nullopt)
        : language("LANGUAGE", std::move(language)),
          all("LC_ALL", std::move(all)),
          standard("LANG", std::move(standard)) {}
};

} // namespace

TEST(UserLanguages, AreThoseOfTheLocaleInTheUsersOrder) {
    EXPECT_THAT(languagesOf({"de_DE.UTF-8", "de_DE", "de.UTF-8", "de", "nl", "en_GB", "en", "C"}),
                ElementsAre("de_DE", "nl", "en_GB"));
    EXPECT_THAT(languagesOf({"sr@latin", "pt", "pt_BR"}), ElementsAre("sr", "pt", "pt_BR"));
}

TEST(UserLanguages, OfNoLanguageAreNone) {
    EXPECT_THAT(languagesOf({"C.UTF-8", "POSIX", "C"}), IsEmpty());
}

TEST(UserLanguages, AreReadWhereTheProgramsTextsAre) {
    EXPECT_THAT((Chosen("nl:de_AT", "de_DE.UTF-8"), webkit::userLanguages()),
                ElementsAre("nl", "de_AT"));
    EXPECT_THAT((Chosen("", "fr_FR.UTF-8", "nl_NL.UTF-8"), webkit::userLanguages()),
                ElementsAre("fr_FR"));
    EXPECT_THAT((Chosen(std::nullopt, "", "nl_NL.UTF-8"), webkit::userLanguages()),
                ElementsAre("nl_NL"));
}

TEST(UserLanguages, AreNotReadFromLanguageWhereNoLanguageIsAskedFor) {
    for (const char* const none : {"C", "POSIX", ""})
        EXPECT_THAT((Chosen("de", none), webkit::userLanguages()), IsEmpty()) << none;
    // Texts are translated there.
    EXPECT_THAT((Chosen("de", "C.UTF-8"), webkit::userLanguages()), ElementsAre("de"));
    EXPECT_THAT((Chosen(std::nullopt, "C.UTF-8"), webkit::userLanguages()), IsEmpty());
}

TEST(PageLanguages, HaveTheLanguageAfterItsCountries) {
    EXPECT_THAT(webkit::pageLanguages({"de_DE", "nl", "en_GB"}),
                ElementsAre("de-DE", "de", "nl", "en-GB", "en"));
    EXPECT_THAT(webkit::pageLanguages({"de_AT", "en", "de_DE"}),
                ElementsAre("de-AT", "en", "de-DE", "de"));
    EXPECT_THAT(webkit::pageLanguages({"pt", "pt_BR"}), ElementsAre("pt", "pt-BR"));
}

TEST(PageLanguages, AreEnglishWhereNoneIsChosen) {
    EXPECT_THAT(webkit::pageLanguages({}), ElementsAre("en-US"));
}

/// What a page and its server learn.
class PageLanguage : public WebKitFixture {
protected:
    void openPage() {
        peer = site({{"/", "hello"}});
        makeView(peer->url());
        open(peer->url("/"));
    }
    std::string acceptedLanguages() const {
        return peer->requests().back().header("Accept-Language").value_or("none");
    }

    std::unique_ptr<MisbehavingServer> peer;
};

TEST_F(PageLanguage, IsTheUsers) {
    const Chosen chosen("nl_NL:de", "de_DE.UTF-8");
    openPage();
    EXPECT_EQ(evaluate("navigator.language"), "nl-NL");
    // The engine keeps the others from scripts, since they tell users apart.
    EXPECT_EQ(evaluate("navigator.languages.join()"), "nl-NL");
    EXPECT_EQ(acceptedLanguages(), "nl-NL,nl;q=0.90,de;q=0.80");
}

TEST_F(PageLanguage, IsEnglishWhereTheUserHasChosenNone) {
    const Chosen chosen(std::nullopt, "C.UTF-8");
    openPage();
    EXPECT_EQ(evaluate("navigator.languages.join()"), "en-US");
    EXPECT_EQ(acceptedLanguages(), "en-US");
}

} // namespace kelo::test
