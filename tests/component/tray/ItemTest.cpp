#include "component/tray/TrayBed.h"

#include <gtest/gtest.h>

#include <map>

namespace kelo::tests {
namespace {

using Texts = std::vector<std::string>;
constexpr const char* properties = "org.freedesktop.DBus.Properties";

struct StatusNotifierItem : testing::Test {
    TrayBed bed;
    StatusNotifierItem() { bed.show(); }

    std::map<Glib::ustring, Glib::VariantBase> all() {
        const auto answer = bed.call("/StatusNotifierItem", properties, "GetAll",
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
    bed.shown->setColor(0x445566);
    bed.shown->setColor(0x445566);
    bed.settle();
    EXPECT_EQ(bed.signals, Texts{"NewIcon ()"});
    EXPECT_EQ(get("IconPixmap"), "[(1, 1, [0xff, 0x44, 0x55, 0x66])]");
}

TEST_F(StatusNotifierItem, IsActivatedByEitherButton) {
    EXPECT_EQ(bed.item("Activate", "(3, 4)").error, "");
    EXPECT_EQ(bed.item("SecondaryActivate", "(3, 4)").error, "");
    bed.settle();
    EXPECT_EQ(bed.events, (Texts{"activate", "activate"}));
}

TEST_F(StatusNotifierItem, UsesTheLastTokenOnceForWhatComesNext) {
    bed.item("ProvideXdgActivationToken", "('one',)");
    bed.item("ProvideXdgActivationToken", "('two',)");
    bed.item("Activate", "(0, 0)");
    bed.item("Activate", "(0, 0)");
    bed.settle();
    EXPECT_EQ(bed.events, (Texts{"token two", "activate", "activate"}));
}

TEST_F(StatusNotifierItem, UsesTheTokenForAnEntryOfTheMenuToo) {
    bed.item("ProvideXdgActivationToken", "('one',)");
    bed.menu("Event", "(1, 'opened', <0>, uint32 0)");
    bed.menu("Event", "(1, 'clicked', <0>, uint32 0)");
    bed.menu("Event", "(4, 'clicked', <0>, uint32 0)");
    bed.settle();
    EXPECT_EQ(bed.events, (Texts{"token one", "open", "settings"}));
}

TEST_F(StatusNotifierItem, KnowsNoMethodThatItDoesNotHave) {
    const std::string unknown = "org.freedesktop.DBus.Error.UnknownMethod";
    EXPECT_EQ(bed.item("ContextMenu", "(0, 0)").error, unknown);
    EXPECT_EQ(bed.item("Scroll", "(1, 'vertical')").error, unknown);
    EXPECT_EQ(bed.item("XAyatanaSecondaryActivate", "(uint32 0,)").error, unknown);
    EXPECT_EQ(bed.item("Activate", "('here',)").error, "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(StatusNotifierItem, LeavesTheBusWithItsOwner) {
    bed.shown.reset();
    EXPECT_NE(bed.item("Activate", "(0, 0)").error, "");
    EXPECT_NE(bed.menu("AboutToShow", "(0,)").error, "");
    bed.show();
    EXPECT_EQ(bed.item("Activate", "(0, 0)").error, "");
}

struct Registration : testing::Test {
    TrayBed bed;
};

TEST_F(Registration, ComesWhenItemAndMenuAreThere) {
    FakeWatcher watcher(bed);
    bed.show();
    bed.until("item and menu have answered",
              [&] { return watcher.identifiers.size() == 1 && watcher.layouts == 1; });
    EXPECT_EQ(watcher.registered, Texts{"/StatusNotifierItem"});
}

TEST_F(Registration, WaitsForATrayThatComesLaterAndComesAgainForEachNewOne) {
    bed.show();
    bed.settle();
    for (int round = 0; round < 2; ++round) {
        FakeWatcher watcher(bed);
        bed.until("the item has registered", [&] { return watcher.layouts == 1; });
        bed.settle();
        EXPECT_EQ(watcher.registered, Texts{"/StatusNotifierItem"}) << "once with each tray";
        EXPECT_EQ(watcher.identifiers, Texts{"(<'app.kelo.Kelo'>,)"}) << "round " << round;
    }
    EXPECT_EQ(bed.item("Activate", "(0, 0)").error, "") << "without a tray it is there still";
}

TEST_F(Registration, EndsWithTheItem) {
    bed.show();
    bed.settle();
    bed.shown.reset();
    FakeWatcher watcher(bed);
    bed.settle();
    bed.settle();
    EXPECT_EQ(watcher.registered, Texts{});
}

} // namespace
} // namespace kelo::tests
