#include "app/SettingsView.h"

#include "fakes/ScopedTestDesktop.h"
#include "service/ServiceEndpoints.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

using platform::InformationDictionary;

struct SettingsViewTest : testing::Test {
    fakes::ScopedTestDesktop desktop;

    static platform::LabeledRow row(std::size_t index) {
        return app::SettingsView().body().rows.at(index);
    }
    std::string version(std::optional<InformationDictionary> dictionary) {
        desktop.bundle.dictionary = std::move(dictionary);
        return row(0).value;
    }
};

TEST_F(SettingsViewTest, HasItsSizeAndItsTwoRowsInThisOrder) {
    const auto pane = app::SettingsView().body();
    EXPECT_EQ(pane.size, (platform::Size{360, 140}));
    ASSERT_EQ(pane.rows.size(), 2u);
    EXPECT_EQ(pane.rows[0].label, "Version");
    EXPECT_EQ(pane.rows[1].label, "Backend");
}

TEST_F(SettingsViewTest, VersionIsTheShortVersionAndTheBuildInParentheses) {
    EXPECT_EQ(version({{{"CFBundleShortVersionString", std::string("2.0")},
                        {"CFBundleVersion", std::string("15")}}}),
              "2.0 (15)");
}

TEST_F(SettingsViewTest, QuestionMarkStandsForWhatIsMissing) {
    EXPECT_EQ(version({{{"CFBundleShortVersionString", std::string("2.0")}}}), "2.0 (?)");
    EXPECT_EQ(version({{{"CFBundleVersion", std::string("57")}}}), "? (57)");
    EXPECT_EQ(version(InformationDictionary{}), "? (?)");
    EXPECT_EQ(version(std::nullopt), "? (?)");
}

TEST_F(SettingsViewTest, QuestionMarkStandsForAValueThatIsNoText) {
    EXPECT_EQ(
        version({{{"CFBundleShortVersionString", 2.0}, {"CFBundleVersion", std::int64_t{15}}}}),
        "? (?)");
    EXPECT_EQ(version({{{"CFBundleShortVersionString", true}, {"CFBundleVersion", {}}}}), "? (?)");
}

TEST_F(SettingsViewTest, EmptyTextIsAText) {
    EXPECT_EQ(version({{{"CFBundleShortVersionString", std::string()},
                        {"CFBundleVersion", std::string("15")}}}),
              " (15)");
}

TEST_F(SettingsViewTest, DictionaryIsReadAnewForEachValueAndAtEachDrawing) {
    version(std::nullopt);
    EXPECT_EQ(desktop.bundle.reads, 2);
    EXPECT_EQ(version({{{"CFBundleShortVersionString", std::string("1.1")}}}), "1.1 (?)");
    EXPECT_EQ(desktop.bundle.reads, 4);
}

TEST_F(SettingsViewTest, BackendIsTheServicesHostAndNothingElse) {
    EXPECT_EQ(row(1).value, service::relyingPartyIdentifier());
    EXPECT_EQ(row(1).value.find("://"), std::string::npos);
}

} // namespace
} // namespace kelo
