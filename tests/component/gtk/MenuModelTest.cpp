#include "linux/gtk/main/MenuBar.h"

#include "base/ObservableObject.h"
#include "linux/gobject/GLibMainLoop.h"

#include <giomm/init.h>
#include <giomm/simpleactiongroup.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace kelo::tests {
namespace {

using Lines = std::vector<std::string>;

std::string attribute(const Glib::RefPtr<Gio::MenuModel>& model, int item,
                      Gio::MenuModel::Attribute name) {
    const auto value = model->get_item_attribute(item, name, Glib::VARIANT_TYPE_STRING);
    if (!value)
        return {};
    return Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(value).get();
}

/// One line for each entry: its text and its action. Sections are set apart by "---".
void describe(const Glib::RefPtr<Gio::MenuModel>& model, Lines& lines) {
    for (int item = 0; item < model->get_n_items(); ++item) {
        if (const auto section = model->get_item_link(item, Gio::MenuModel::Link::SECTION)) {
            if (item > 0)
                lines.push_back("---");
            describe(section, lines);
            continue;
        }
        lines.push_back(attribute(model, item, Gio::MenuModel::Attribute::LABEL) + " = " +
                        attribute(model, item, Gio::MenuModel::Attribute::ACTION));
    }
}

Lines described(const Glib::RefPtr<Gio::MenuModel>& model) {
    Lines lines;
    describe(model, lines);
    return lines;
}

struct MenuModel : testing::Test {
    MenuModel() {
        Gio::init();
        actions = Gio::SimpleActionGroup::create();
    }

    platform::MenuItem item(const std::string& label, bool enabled = true) {
        return {label, enabled, [this, label] { chosen.push_back(label); }};
    }
    static platform::MenuItem withShortcut(platform::MenuItem item, const std::string& key) {
        item.shortcut = platform::KeyboardShortcut{key, platform::KeyModifier::command};
        return item;
    }
    platform::CommandMenu menu(const std::string& title = "Account") {
        return {title,
                {[this] { return content; },
                 [this] { return std::vector<std::shared_ptr<ObservableObject>>{state}; }}};
    }
    void change(platform::Menu next) {
        state->objectWillChange();
        content = std::move(next);
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
    }
    gtk::MenuActions menuActions() {
        return {*actions.get(), [this](const std::string& action, const std::string& accelerator) {
                    accelerators.push_back(action + " " + accelerator);
                }};
    }
    void choose(const std::string& action) { actions->activate_action(action); }

    gobject::GLibMainLoop loop;
    MainLoop::Installation installation{loop};
    Glib::RefPtr<Gio::SimpleActionGroup> actions;
    std::shared_ptr<ObservableObject> state = std::make_shared<ObservableObject>();
    platform::Menu content;
    Lines chosen;
    Lines accelerators; ///< as they were set, one after the other
};

TEST_F(MenuModel, HasEachEntryInItsOrderAndSeparatorsBetweenSections) {
    content = {item("One"),
               item("Two"),
               platform::MenuSeparator{},
               item("Three"),
               platform::MenuSeparator{},
               platform::SettingsLink{"Settings…"}};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    EXPECT_EQ(model.title(), "Account");
    EXPECT_EQ(described(model.model()),
              (Lines{"One = app.command-0", "Two = app.command-1", "---", "Three = app.command-3",
                     "---", "Settings… = app.settings"}));
}

TEST_F(MenuModel, SeparatorsWithNothingBetweenThemMakeNoEmptySection) {
    content = {platform::MenuSeparator{}, item("One"), platform::MenuSeparator{},
               platform::MenuSeparator{}};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    EXPECT_EQ(model.model()->get_n_items(), 1);
    EXPECT_EQ(described(model.model()), Lines{"One = app.command-1"});
}

TEST_F(MenuModel, UnderscoresAreShownAsTheyStand) {
    content = {item("snake_case"), platform::SettingsLink{"_Settings"}};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    // A menu model shows a double underscore as one.
    EXPECT_EQ(described(model.model()),
              (Lines{"snake__case = app.command-0", "__Settings = app.settings"}));
}

TEST_F(MenuModel, ChoosingAnEntryRunsItsActionAndNoOther) {
    content = {item("One"), item("Two")};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    choose("command-1");
    EXPECT_EQ(chosen, Lines{"Two"});
}

TEST_F(MenuModel, DisabledEntryCannotBeChosen) {
    content = {item("One", false), item("Two")};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    EXPECT_FALSE(actions->get_action_enabled("command-0"));
    EXPECT_TRUE(actions->get_action_enabled("command-1"));
    choose("command-0");
    EXPECT_EQ(chosen, Lines{});
}

TEST_F(MenuModel, EntryWithoutAnActionDoesNothing) {
    content = {platform::MenuItem{"Nothing", true, nullptr}};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    choose("command-0");
    EXPECT_EQ(chosen, Lines{});
}

TEST_F(MenuModel, FollowsItsContent) {
    content = {item("One"), item("Two")};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    change({item("Uno", false)});
    EXPECT_EQ(described(model.model()), Lines{"Uno = app.command-0"});
    EXPECT_FALSE(actions->get_action_enabled("command-0"));
    choose("command-1");
    EXPECT_EQ(chosen, Lines{}) << "the second entry is gone";
    change({item("Uno"), item("Due"), item("Tre")});
    choose("command-2");
    EXPECT_EQ(chosen, Lines{"Tre"});
}

TEST_F(MenuModel, KindOfAnEntryCountsAsMuchAsItsText) {
    content = {item("Settings")};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    change({platform::SettingsLink{"Settings"}});
    EXPECT_EQ(described(model.model()), Lines{"Settings = app.settings"});
    choose("command-0");
    EXPECT_EQ(chosen, Lines{});
}

TEST_F(MenuModel, IsNotRebuiltWhereOnlyActionsHaveChanged) {
    content = {item("One")};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    int rebuilds = 0;
    model.model()->signal_items_changed().connect([&](int, int, int) { ++rebuilds; });
    change({item("One", false)});
    EXPECT_EQ(rebuilds, 0) << "an open menu would close";
    EXPECT_FALSE(actions->get_action_enabled("command-0"));
    change({platform::MenuItem{"One", true, [this] { chosen.push_back("another"); }}});
    choose("command-0");
    EXPECT_EQ(chosen, Lines{"another"});
    EXPECT_EQ(rebuilds, 0);
}

TEST_F(MenuModel, ShortcutBecomesTheAcceleratorOfItsEntry) {
    content = {item("One"), withShortcut(item("Two"), "r"), withShortcut(item("Three"), ","),
               platform::MenuItem{"Four", true, nullptr, platform::KeyboardShortcut{"x"}}};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    EXPECT_EQ(accelerators, (Lines{"app.command-1 <Control>r", "app.command-2 <Control>comma",
                                   "app.command-3 x"}));
}

TEST_F(MenuModel, ShortcutFollowsItsContent) {
    content = {withShortcut(item("One"), "r"), withShortcut(item("Two"), "t")};
    const gtk::CommandMenuModel model(menuActions(), "command-", menu());
    accelerators.clear();
    change({withShortcut(item("One"), "r"), item("Two")});
    EXPECT_EQ(accelerators, Lines{"app.command-1 "});
    change({withShortcut(item("One"), "s")});
    change({});
    EXPECT_EQ(accelerators,
              (Lines{"app.command-1 ", "app.command-0 <Control>s", "app.command-0 "}));
}

TEST_F(MenuModel, ActionsGoWithTheMenu) {
    content = {item("One")};
    { const gtk::CommandMenuModel model(menuActions(), "command-", menu()); }
    EXPECT_FALSE(actions->has_action("command-0"));
    change({item("Two")});
    EXPECT_FALSE(actions->has_action("command-0")) << "nothing is drawn any more";
}

TEST_F(MenuModel, BarHasItsMenusInTheirOrder) {
    content = {item("One")};
    gtk::MenuBar bar(menuActions());
    bar.append(menu("Account"));
    bar.append(menu("snake_case"));
    const auto& model = bar.model();
    ASSERT_EQ(model->get_n_items(), 2);
    const auto submenu = [&](int index) {
        return model->get_item_link(index, Gio::MenuModel::Link::SUBMENU);
    };
    const auto title = [&](int index) {
        return attribute(model, index, Gio::MenuModel::Attribute::LABEL);
    };
    EXPECT_EQ(title(0), "Account");
    EXPECT_EQ(described(submenu(0)), Lines{"One = app.menu-0-0"});
    EXPECT_EQ(title(1), "snake__case");
    EXPECT_EQ(described(submenu(1)), Lines{"One = app.menu-1-0"});
}

} // namespace
} // namespace kelo::tests
