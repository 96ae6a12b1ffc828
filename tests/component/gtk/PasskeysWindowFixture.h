#pragma once

#include "component/gtk/FakeInventory.h"
#include "component/gtk/RunningProgram.h"

#include <gdk/gdkkeysyms.h>
#include <gmock/gmock.h>
#include <gtkmm/listboxrow.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace kelo::tests {

/// The program with the window that shows the passkeys of a fake inventory.
class PasskeysWindowFixture : public testing::Test {
protected:
    void whileOpen(const std::function<void()>& body) {
        program.run([&] {
            open();
            body();
        });
    }
    /// Until the list is read.
    void open() {
        program.host.openPasskeys();
        program.untilActive(window());
        untilRead();
    }
    void untilRead() {
        RunningProgram::until("the list is read", [&] { return inventory->reads > 0; });
        RunningProgram::settle();
        program.untilDrawn(window());
    }
    void lookAgain() {
        program.host.openWindow("main");
        program.untilActive(program.window("Kelo"));
        const int before = inventory->reads;
        program.host.openPasskeys();
        RunningProgram::until("the list is read anew", [&] { return inventory->reads > before; });
        program.untilActive(window());
        RunningProgram::settle();
    }
    void answer() {
        RunningProgram::until("a deletion is asked for",
                              [&] { return inventory->answer.has_value(); });
        std::exchange(inventory->answer, std::nullopt)->resume();
        RunningProgram::until("the deletion has ended", [&] { return inventory->underWay == 0; });
        RunningProgram::settle();
    }
    static constexpr const char* title = "Passkeys on This Computer";
    static constexpr const char* none = "There is no passkey on this computer.";

    Gtk::Window& window() { return program.window(title); }
    std::vector<std::string> texts() { return textsIn(*window().get_child()); }
    Gtk::Button& deleteButton(const std::string& account) {
        return *buttonNamed(window(),
                            "Delete the passkey of " + account + " for assistant.example.com…");
    }
    /// The account of the row with the keyboard; empty if none has it.
    std::string focused() {
        for (Gtk::Widget* widget = window().get_focus(); widget; widget = widget->get_parent())
            if (auto* row = dynamic_cast<Gtk::ListBoxRow*>(widget); row && row->get_mapped())
                return textsIn(*row).front();
        return "";
    }
    void focus(const std::string& account) {
        deleteButton(account).get_ancestor(GTK_TYPE_LIST_BOX_ROW)->grab_focus();
        ASSERT_EQ(focused(), account);
    }
    bool isOpen() {
        return std::ranges::any_of(program.windowsOnScreen(), [](Gtk::Window* each) {
            return each->get_title().raw() == title;
        });
    }

    std::shared_ptr<FakeInventory> inventory = std::make_shared<FakeInventory>();
    RunningProgram program{[this] {
        gtk::HostSettings settings;
        settings.passkeys = inventory;
        return settings;
    }()};
};

} // namespace kelo::tests
