#include "component/tray/TrayFixture.h"

#include <gtest/gtest.h>

#include <map>

namespace kelo::tests {
namespace {

using Texts = std::vector<std::string>;
constexpr const char* properties = "org.freedesktop.DBus.Properties";

struct StatusNotifierItem : testing::Test {
    TrayFixture tray;
    StatusNotifierItem() { tray.show(); }

    std::map<Glib::ustring, Glib::VariantBase> all() {
        const auto answer = tray.call("/StatusNotifierItem", properties, "GetAll",
                                      "('org.kde.StatusNotifierItem',)");
        EXPECT_EQ(answer.error, "");
        Glib::Variant<std::map<Glib::ustring, Glib::VariantBase>> values;
        answer.values.get_child(values, 0);
        return values.get();
    }
    std::string get(const std::string& name) { return all().at(name).print(false); }
};

TEST_F(StatusNotifierItem, HasEveryPropertyOfTheProtocolInItsTypeAlsoWhereEmpty) {
    const std::map<std::string, std::string> types{{"Category", "s"},
                                                   {"Id", "s"},
                                                   {"Title", "s"},
                                                   {"Status", "s"},
                                                   {"WindowId", "i"},
                                                   {"IconName", "s"},
                                                   {"IconThemePath", "s"},
                                                   {"IconPixmap", "a(iiay)"},
                                                   {"OverlayIconName", "s"},
                                                   {"OverlayIconPixmap", "a(iiay)"},
                                                   {"AttentionIconName", "s"},
                                                   {"AttentionIconPixmap", "a(iiay)"},
                                                   {"AttentionMovieName", "s"},
                                                   {"ToolTip", "(sa(iiay)ss)"},
                                                   {"Menu", "o"},
                                                   {"ItemIsMenu", "b"}};
    std::map<std::string, std::string> found;
    for (const auto& [name, value] : all())
        found[name] = value.get_type_string();
    EXPECT_EQ(found, types);
}

TEST_F(StatusNotifierItem, SaysWhoItIs) {
    EXPECT_EQ(get("Category"), "'ApplicationStatus'");
    EXPECT_EQ(get("Id"), "'app.kelo.Kelo'");
    EXPECT_EQ(get("Title"), "'Kelo'");
    EXPECT_EQ(get("Status"), "'Active'");
    EXPECT_EQ(get("IconName"), "'kelo-brain-symbolic'");
    EXPECT_EQ(get("Menu"), "'/StatusNotifierItem/Menu'");
    EXPECT_EQ(get("ItemIsMenu"), "true");
    EXPECT_EQ(get("ToolTip"), "('', [], 'Kelo', '')");
}

TEST_F(StatusNotifierItem, TellsOnceThatItsIconHasChanged) {
    EXPECT_EQ(get("IconPixmap"), "[(1, 1, [0xff, 0x11, 0x22, 0x33])]");
    tray.shown->setColor(0x445566);
    tray.shown->setColor(0x445566);
    tray.settle();
    EXPECT_EQ(tray.signals, Texts{"NewIcon ()"});
    EXPECT_EQ(get("IconPixmap"), "[(1, 1, [0xff, 0x44, 0x55, 0x66])]");
}

TEST_F(StatusNotifierItem, IsActivatedByEitherButton) {
    EXPECT_EQ(tray.item("Activate", "(3, 4)").error, "");
    EXPECT_EQ(tray.item("SecondaryActivate", "(3, 4)").error, "");
    tray.settle();
    EXPECT_EQ(tray.events, (Texts{"activate", "activate"}));
}

TEST_F(StatusNotifierItem, UsesTheLastTokenOnceForWhatComesNext) {
    tray.item("ProvideXdgActivationToken", "('one',)");
    tray.item("ProvideXdgActivationToken", "('two',)");
    tray.item("Activate", "(0, 0)");
    tray.item("Activate", "(0, 0)");
    tray.settle();
    EXPECT_EQ(tray.events, (Texts{"token two", "activate", "activate"}));
}

TEST_F(StatusNotifierItem, UsesTheTokenForAnEntryOfTheMenuToo) {
    tray.item("ProvideXdgActivationToken", "('one',)");
    tray.menu("Event", "(1, 'opened', <0>, uint32 0)");
    tray.menu("Event", "(1, 'clicked', <0>, uint32 0)");
    tray.menu("Event", "(4, 'clicked', <0>, uint32 0)");
    tray.settle();
    EXPECT_EQ(tray.events, (Texts{"token one", "open", "settings"}));
}

TEST_F(StatusNotifierItem, KnowsNoMethodThatItDoesNotHave) {
    const std::string unknown = "org.freedesktop.DBus.Error.UnknownMethod";
    EXPECT_EQ(tray.item("ContextMenu", "(0, 0)").error, unknown);
    EXPECT_EQ(tray.item("Scroll", "(1, 'vertical')").error, unknown);
    EXPECT_EQ(tray.item("XAyatanaSecondaryActivate", "(uint32 0,)").error, unknown);
    EXPECT_EQ(tray.item("Activate", "('here',)").error, "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(StatusNotifierItem, LeavesTheBusWithItsOwner) {
    tray.shown.reset();
    EXPECT_NE(tray.item("Activate", "(0, 0)").error, "");
    EXPECT_NE(tray.menu("AboutToShow", "(0,)").error, "");
    tray.show();
    EXPECT_EQ(tray.item("Activate", "(0, 0)").error, "");
}

struct Registration : testing::Test {
    TrayFixture tray;
};

TEST_F(Registration, ComesWhenItemAndMenuAreThere) {
    FakeWatcher watcher(tray);
    tray.show();
    tray.until("item and menu have answered",
               [&] { return watcher.identifiers.size() == 1 && watcher.layouts == 1; });
    EXPECT_EQ(watcher.registered, Texts{"/StatusNotifierItem"});
}

TEST_F(Registration, WaitsForATrayThatComesLaterAndComesAgainForEachNewOne) {
    tray.show();
    tray.settle();
    for (int round = 0; round < 2; ++round) {
        FakeWatcher watcher(tray);
        tray.until("the item has registered", [&] { return watcher.layouts == 1; });
        tray.settle();
        EXPECT_EQ(watcher.registered, Texts{"/StatusNotifierItem"}) << "once with each tray";
        EXPECT_EQ(watcher.identifiers, Texts{"(<'app.kelo.Kelo'>,)"}) << "round " << round;
    }
    EXPECT_EQ(tray.item("Activate", "(0, 0)").error, "") << "without a tray it is there still";
}

TEST_F(Registration, ShellOfGnomeIsNotToldThatTheItemCanBeChosen) {
    const std::string unknown = "org.freedesktop.DBus.Error.UnknownMethod";
    const auto description = [this] {
        return tray
            .call("/StatusNotifierItem", "org.freedesktop.DBus.Introspectable", "Introspect", "()")
            .text;
    };
    tray.show();
    tray.settle();
    EXPECT_NE(description().find("\"Activate\""), std::string::npos);
    {
        FakeWatcher watcher(tray, {"org.gnome.Shell"});
        tray.until("the item has registered", [&] { return watcher.layouts == 1; });
        EXPECT_EQ(description().find("\"Activate\""), std::string::npos);
        EXPECT_EQ(tray.item("Activate", "(0, 0)").error, unknown);
        EXPECT_EQ(tray.item("SecondaryActivate", "(0, 0)").error, "");
    }
    // Another tray, as after a change of desktops in one session.
    FakeWatcher watcher(tray);
    tray.until("the item has registered again", [&] { return watcher.layouts == 1; });
    EXPECT_EQ(tray.item("Activate", "(0, 0)").error, "");
}

TEST_F(Registration, TrayBesideTheShellOfGnomeIsToldThatTheItemCanBeChosen) {
    const FakeWatcher watcher(tray);
    tray.ours->call_sync("/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                         Glib::VariantContainerBase(g_variant_new("(su)", "org.gnome.Shell", 0U)),
                         "org.freedesktop.DBus");
    tray.show();
    tray.until("the item has registered", [&] { return watcher.layouts == 1; });
    EXPECT_EQ(tray.item("Activate", "(0, 0)").error, "");
}

TEST_F(Registration, EndsWithTheItem) {
    tray.show();
    tray.settle();
    tray.shown.reset();
    FakeWatcher watcher(tray);
    tray.settle();
    tray.settle();
    EXPECT_EQ(watcher.registered, Texts{});
}

} // namespace
} // namespace kelo::tests
