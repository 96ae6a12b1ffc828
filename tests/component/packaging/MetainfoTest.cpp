#include "component/packaging/Packages.h"

#include <gmock/gmock.h>

namespace kelo::tests {

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Metainfo : public testing::Test {
protected:
    Outcome write(const std::string& settings) const {
        return runCommand("SOURCE_DATE_EPOCH=1795000000 '" KELO_CMAKE "' " + settings +
                          " -Dkelo_metainfo_installed='" + file.string() +
                          "' -P '" KELO_SOURCE_FOLDER "/cmake/WriteMetainfo.cmake'");
    }

    std::string text() const { return readFile(file); }

    TreeFolder folder;
    std::filesystem::path file = folder / "app.kelo.Kelo.metainfo.xml";
};

} // namespace

TEST_F(Metainfo, NamesTheVersionAndTheDateOfTheBuild) {
    ASSERT_EQ(write("-DKELO_VERSION=1.4.2").status, 0);
    EXPECT_THAT(text(),
                HasSubstr("<release version=\"1.4.2\" date=\"2026-11-18\" type=\"stable\"/>"));
    EXPECT_THAT(text(), AllOf(Not(HasSubstr("homepage")), Not(HasSubstr("screenshot"))));
    ASSERT_EQ(write("-DKELO_VERSION=1.5b2").status, 0);
    EXPECT_THAT(text(), HasSubstr("version=\"1.5b2\" date=\"2026-11-18\" type=\"development\""));
}

TEST_F(Metainfo, IsValidWithEverythingThatAPublisherGives) {
    if (runCommand("command -v appstreamcli").status != 0)
        GTEST_SKIP() << "there is no appstreamcli";
    ASSERT_EQ(write("-DKELO_VERSION=1.4.2 -DKELO_HOMEPAGE=https://kelo.example/ "
                    "-DKELO_SCREENSHOT=https://kelo.example/kelo.png")
                  .status,
              0);
    EXPECT_THAT(text(), AllOf(HasSubstr("<url type=\"homepage\">https://kelo.example/</url>"),
                              HasSubstr("<image>https://kelo.example/kelo.png</image>")));
    const auto valid = runCommand("appstreamcli validate --no-net '" + file.string() + "'");
    EXPECT_EQ(valid.status, 0) << valid.output;
}

TEST_F(Metainfo, LeadsNowhereWithoutEncryption) {
    for (const auto* setting :
         {"-DKELO_HOMEPAGE=http://kelo.example/", "-DKELO_SCREENSHOT=http://kelo.example/kelo.png",
          "-DKELO_SCREENSHOT='https://kelo.example/<'"})
        EXPECT_NE(write(std::string("-DKELO_VERSION=1 ") + setting).status, 0) << setting;
}

} // namespace kelo::tests
