#include "component/tray/TrayFixture.h"

#include <gtest/gtest.h>

namespace kelo::tests {
namespace {

using Texts = std::vector<std::string>;
constexpr const char* refusal = "org.freedesktop.DBus.Error.InvalidArgs";

struct BusMenu : testing::Test {
    TrayFixture tray;
    BusMenu() { tray.show(); }
};

constexpr const char* wholeLayout =
    "(1, (0, {'children-display': <'submenu'>}, ["
    "<(1, {'label': <'Open Kelo'>}, [])>, <(2, {'type': <'separator'>}, [])>, "
    "<(3, {'label': <'Check for Updates…'>}, [])>, <(4, {'label': <'Settings…'>}, [])>, "
    "<(5, {'type': <'separator'>}, [])>, "
    "<(6, {'label': <'Quit Kelo'>, 'shortcut': <[['Control', 'q']]>}, [])>]))";

TEST_F(BusMenu, GivesItsEntriesInTheirOrderToTheDepthAskedFor) {
    EXPECT_EQ(tray.menu("GetLayout", "(0, -1, @as [])").text, wholeLayout);
    EXPECT_EQ(tray.menu("GetLayout", "(0, 1, @as [])").text, wholeLayout);
    EXPECT_EQ(tray.menu("GetLayout", "(0, 0, @as [])").text,
              "(1, (0, {'children-display': <'submenu'>}, []))");
    EXPECT_EQ(tray.menu("GetLayout", "(3, -1, @as [])").text,
              "(1, (3, {'label': <'Check for Updates…'>}, []))");
}

TEST_F(BusMenu, GivesOnlyThePropertiesAskedFor) {
    EXPECT_EQ(tray.menu("GetLayout", "(0, -1, ['type', 'children-display'])").text,
              "(1, (0, {'children-display': <'submenu'>}, [<(1, {}, [])>, "
              "<(2, {'type': <'separator'>}, [])>, <(3, {}, [])>, <(4, {}, [])>, "
              "<(5, {'type': <'separator'>}, [])>, <(6, {}, [])>]))");
    EXPECT_EQ(tray.menu("GetGroupProperties", "([1, 6, 99], ['label'])").text,
              "([(1, {'label': <'Open Kelo'>}), (6, {'label': <'Quit Kelo'>})],)");
    EXPECT_EQ(tray.menu("GetGroupProperties", "([6], @as [])").text,
              "([(6, {'label': <'Quit Kelo'>, 'shortcut': <[['Control', 'q']]>})],)");
}

TEST_F(BusMenu, GivesTheWholeGroupWhenNothingIsNamed) {
    const auto all = tray.menu("GetGroupProperties", "(@ai [], @as [])");
    ASSERT_EQ(all.error, "");
    Glib::VariantContainerBase group;
    all.values.get_child(group, 0);
    EXPECT_EQ(group.get_n_children(), 7u);
}

TEST_F(BusMenu, GivesOnePropertyOrItsDefault) {
    EXPECT_EQ(tray.menu("GetProperty", "(1, 'label')").text, "(<'Open Kelo'>,)");
    EXPECT_EQ(tray.menu("GetProperty", "(1, 'enabled')").text, "(<true>,)");
    EXPECT_EQ(tray.menu("GetProperty", "(2, 'type')").text, "(<'separator'>,)");
    EXPECT_EQ(tray.menu("GetProperty", "(1, 'taste')").error, refusal);
    EXPECT_EQ(tray.menu("GetProperty", "(9, 'label')").error, refusal);
}

TEST_F(BusMenu, RefusesWhatItDoesNotHave) {
    EXPECT_EQ(tray.menu("GetLayout", "(99, -1, @as [])").error, refusal);
    EXPECT_EQ(tray.menu("Event", "(99, 'clicked', <0>, uint32 0)").error, refusal);
    EXPECT_EQ(tray.menu("AboutToShow", "(99,)").error, refusal);
    EXPECT_EQ(tray.menu("EventGroup", "([(98, 'clicked', <0>, uint32 0), "
                                      "(99, 'clicked', <0>, uint32 0)],)")
                  .error,
              refusal);
    EXPECT_EQ(tray.menu("AboutToShowGroup", "([99],)").error, refusal);
    tray.settle();
    EXPECT_EQ(tray.events, Texts{});
}

TEST_F(BusMenu, AnswersBeforeItRunsWhatWasClicked) {
    bool isAnswered = false;
    // An action may take long or end the program, so the host must have its reply first.
    tray.content[0] =
        platform::MenuItem{"Open Kelo", true, [&] {
                               tray.until("the answer has come", [&] { return isAnswered; });
                               tray.events.push_back("open");
                           }};
    tray.shown->redraw();
    tray.theirs->call(
        "/StatusNotifierItem/Menu", "com.canonical.dbusmenu", "Event",
        Glib::VariantContainerBase(g_variant_new_parsed("(1, 'clicked', <0>, uint32 0)")),
        [&](const Glib::RefPtr<Gio::AsyncResult>&) { isAnswered = true; },
        tray.ours->get_unique_name());
    tray.until("the action has run", [&] { return !tray.events.empty(); });
}

TEST_F(BusMenu, TakesClicksInAGroup) {
    const auto answer = tray.menu("EventGroup", "([(3, 'clicked', <0>, uint32 0), "
                                                "(99, 'clicked', <0>, uint32 0)],)");
    EXPECT_EQ(answer.text, "([99],)");
    tray.settle();
    EXPECT_EQ(tray.events, Texts{"check"});
    EXPECT_EQ(tray.menu("EventGroup", "(@a(isvu) [],)").text, "([],)");
}

TEST_F(BusMenu, OpensTheSettingsByTheirLink) {
    tray.menu("Event", "(4, 'clicked', <0>, uint32 0)");
    tray.settle();
    EXPECT_EQ(tray.events, Texts{"settings"});
}

TEST_F(BusMenu, IgnoresClicksOnWhatCannotBeChosenAndOtherEvents) {
    std::get<platform::MenuItem>(tray.content[2]).enabled = false;
    tray.shown->redraw();
    for (const char* event : {"(3, 'clicked', <0>, uint32 0)", "(2, 'clicked', <0>, uint32 0)",
                              "(0, 'clicked', <0>, uint32 0)", "(1, 'hovered', <0>, uint32 0)",
                              "(0, 'opened', <0>, uint32 0)", "(0, 'closed', <0>, uint32 0)"})
        EXPECT_EQ(tray.menu("Event", event).error, "") << event;
    tray.settle();
    EXPECT_EQ(tray.events, Texts{});
}

TEST_F(BusMenu, AClickWhoseItemIsGoneWhenItsTurnComesDoesNothing) {
    tray.menu("Event", "(2, 'opened', <0>, uint32 0)");
    tray.theirs->call(
        "/StatusNotifierItem/Menu", "com.canonical.dbusmenu", "Event",
        Glib::VariantContainerBase(g_variant_new_parsed("(1, 'clicked', <0>, uint32 0)")), {},
        tray.ours->get_unique_name());
    tray.shown.reset();
    tray.settle();
    EXPECT_EQ(tray.events, Texts{});
}

TEST_F(BusMenu, ShowsUnderscoresAsTheyStand) {
    tray.content = {platform::MenuItem{"snake_case__", true, [] {}}};
    tray.shown->redraw();
    EXPECT_EQ(tray.menu("GetGroupProperties", "(@ai [], ['label'])").text,
              "([(0, {}), (7, {'label': <'snake__case____'>})],)");
}

TEST_F(BusMenu, TellsOnlyWhatChangedOfAnEntry) {
    std::get<platform::MenuItem>(tray.content[2]).enabled = false;
    tray.shown->redraw();
    tray.shown->redraw();
    tray.settle();
    EXPECT_EQ(tray.signals, Texts{"ItemsPropertiesUpdated ([(3, {'enabled': <false>})], [])"});
    tray.signals.clear();
    std::get<platform::MenuItem>(tray.content[2]).enabled = true;
    std::get<platform::MenuItem>(tray.content[0]).label = "Open";
    tray.shown->redraw();
    tray.settle();
    EXPECT_EQ(tray.signals, Texts{"ItemsPropertiesUpdated ([(1, {'label': <'Open'>})], "
                                  "[(3, ['enabled'])])"});
}

TEST_F(BusMenu, AnnouncesTheRevisionThatItThenGivesAndKeepsTheNumbersOfEntries) {
    tray.content.erase(tray.content.begin() + 2); // Check for Updates…
    tray.shown->redraw();
    tray.settle();
    EXPECT_EQ(tray.signals, Texts{"LayoutUpdated (2, 0)"});
    EXPECT_EQ(tray.menu("GetLayout", "(0, -1, ['label'])").text,
              "(2, (0, {}, [<(1, {'label': <'Open Kelo'>}, [])>, <(2, {}, [])>, "
              "<(4, {'label': <'Settings…'>}, [])>, <(5, {}, [])>, "
              "<(6, {'label': <'Quit Kelo'>}, [])>]))");
    tray.content.insert(tray.content.begin(), platform::MenuItem{"New", true, [] {}});
    tray.shown->redraw();
    EXPECT_EQ(tray.menu("GetLayout", "(7, 0, ['label'])").text, "(3, (7, {'label': <'New'>}, []))");
    EXPECT_EQ(tray.menu("Event", "(3, 'clicked', <0>, uint32 0)").error, refusal);
}

TEST_F(BusMenu, SaysBeforeItIsShownWhetherSomethingChanged) {
    EXPECT_EQ(tray.menu("AboutToShow", "(0,)").text, "(false,)");
    std::get<platform::MenuItem>(tray.content[0]).label = "Open it";
    EXPECT_EQ(tray.menu("AboutToShow", "(0,)").text, "(true,)");
    EXPECT_EQ(tray.menu("AboutToShow", "(0,)").text, "(false,)");
    EXPECT_EQ(tray.menu("AboutToShowGroup", "([0, 99],)").text, "([], [99])");
    tray.content.pop_back();
    EXPECT_EQ(tray.menu("AboutToShowGroup", "([0],)").text, "([0], [])");
}

TEST_F(BusMenu, HasTheProtocolsProperties) {
    EXPECT_EQ(tray.call("/StatusNotifierItem/Menu", "org.freedesktop.DBus.Properties", "GetAll",
                        "('com.canonical.dbusmenu',)")
                  .values.get_child(0)
                  .get_type_string(),
              "a{sv}");
    EXPECT_EQ(tray.call("/StatusNotifierItem/Menu", "org.freedesktop.DBus.Properties", "Get",
                        "('com.canonical.dbusmenu', 'Version')")
                  .text,
              "(<uint32 3>,)");
}

} // namespace
} // namespace kelo::tests
