#pragma once

#include "base/Translation.h"
#include "component/gtk/FakeInventory.h"
#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/GtkPasskeySheet.h"

#include <gdk/gdkkeysyms.h>

#include <functional>
#include <string>
#include <utility>

namespace kelo::tests {

/// The pictures of the window with the passkeys: none, one, many, in trouble and while one is
/// deleted.
class PasskeysGallery {
public:
    using Keep = std::function<void(Gtk::Window& window, const std::string& name)>;

    /// The inventory is the program's.
    PasskeysGallery(RunningProgram& program, FakeInventory& inventory, Keep keep)
        : program(program), inventory(inventory), keep(std::move(keep)) {}

    void walk() {
        inventory.all.clear();
        inventory.found.clear();
        keepPasskeys("none");
        inventory.add("ada@example.com");
        keepPasskeys("one");
        keepPasskeys("", [this](Gtk::Window& window) { askToDelete(window); });
        auto& used = inventory.add("grace@example.com");
        used.lastUsed = used.made + std::chrono::days(300);
        used.isInChip = used.isAccepted = true;
        inventory.add("a.very.long.account.name.that.does.not.fit@subdomain.example.com");
        inventory.add(std::string(64, 'W'));
        inventory.add("עדה לאבלייס");
        inventory.found = {
            {"chip", kelo::inventory::Finding::State::notice, translated("Security chip"),
             translated("New passkeys are kept in software. %1",
                        {translated("There is no security chip (TPM) in this computer, or it is "
                                    "switched off in the settings of the firmware.")})},
            {"keyring", kelo::inventory::Finding::State::trouble, translated("Keyring"),
             translated("No keyring is running, and without one a passkey cannot be kept safe. "
                        "Start your desktop's keyring or password manager and try again.")}};
        keepPasskeys("findings");
        const Gtk::TextDirection usual = Gtk::Widget::get_default_direction();
        Gtk::Widget::set_default_direction(Gtk::TextDirection::RTL);
        keepPasskeys("right-to-left");
        Gtk::Widget::set_default_direction(usual);
        inventory.found.clear();
        for (int number = 0; number < 300; ++number)
            inventory.add("person" + std::to_string(number) + "@example.com");
        keepPasskeys("many");
        inventory.failure = translated("Your passkeys were written by a newer version of Kelo. "
                                       "Update Kelo, then try again.");
        keepPasskeys("trouble");
        inventory.failure = std::nullopt;
    }

private:
    void keepPasskeys(const std::string& name, const std::function<void(Gtk::Window&)>& use = {}) {
        program.untilActive(program.window("Kelo"));
        program.host.openPasskeys();
        auto& window = program.window(translated("Passkeys on This Computer"));
        program.untilActive(window);
        if (use)
            use(window);
        else
            keep(window, "passkeys-" + name);
        window.close();
    }

    void askToDelete(Gtk::Window& window) {
        program.settle();
        authenticator::ConsentRequest request;
        request.ceremony = authenticator::Ceremony::deletion;
        request.warning =
            translated("The passkey of %1 for %2 will be deleted from this computer for good. The "
                       "service is not told: remove the passkey in your account there as well.",
                       {"ada@example.com", "assistant.example.com"});
        gtk::GtkPasskeySheetFactory factory(hurryingClock());
        auto sheet = factory.makeSheet(program.host.keyWindow());
        spawn(converse(*sheet, std::move(request)));
        auto& question = program.window(translated("Delete this passkey?"));
        program.untilActive(question);
        keep(question, "passkeys-delete");
        auto* button = buttonNamed(question, translated("Delete"));
        program.click(*button);
        program.until("a question", [&] { return withClass(question, "password"); });
        keep(question, "passkeys-delete-password");
        dropSpawnedTasks();
        sheet.reset();
        program.untilActive(window);
        inventory.result = {false, translated("Nothing was deleted.")};
        program.screen.press(GDK_KEY_Delete);
        program.until("a deletion", [&] { return inventory.answer.has_value(); });
        std::exchange(inventory.answer, std::nullopt)->resume();
        keep(window, "passkeys-refused");
    }

    static Task<void> converse(authenticator::PasskeySheet& sheet,
                               authenticator::ConsentRequest request) {
        co_await sheet.confirm(std::move(request));
        authenticator::VerificationPrompt prompt{"Password: ", false};
        co_await sheet.ask(std::move(prompt));
    }

    RunningProgram& program;
    FakeInventory& inventory;
    const Keep keep;
};

} // namespace kelo::tests
