// Shows every window of the desktop side, one after the other, and keeps a picture of each.
//   with-display with-window-manager openbox gallery FOLDER
// It speaks the language of the environment: LANGUAGE=de shows whether German fits.
#include "base/Translation.h"
#include "component/gtk/PasskeysGallery.h"
#include "component/gtk/RunningProgram.h"
#include "linux/downloads/DownloadList.h"
#include "linux/gtk/dialogs/GtkAlertPresenter.h"
#include "linux/gtk/dialogs/GtkPageDialogs.h"
#include "linux/gtk/dialogs/GtkPasskeySheet.h"
#include "linux/gtk/dialogs/GtkPermissionAsker.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "linux/gtk/update/GtkUserDriver.h"
#include "linux/locale/UserLocale.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/settings.h>

#include <iostream>

namespace kelo::tests {
namespace {

constexpr const char* longError =
    "Could not connect to assistant.example.com: Connection refused. Check your connection and "
    "try again.";

gtk::HostSettings settingsWith(const std::shared_ptr<downloads::DownloadList>& list,
                               const std::shared_ptr<FakeInventory>& inventory) {
    gtk::HostSettings settings;
    settings.downloads = list;
    settings.passkeys = inventory;
    settings.permissions = std::make_shared<permission::Permissions>("", "");
    settings.permissions->remember(permission::Capability::microphone, permission::Answer::allowed);
    return settings;
}

class Gallery {
public:
    explicit Gallery(std::string folder) : folder(std::move(folder)) {}

    void show(int textPercent) {
        program.run([this, textPercent] {
            constexpr int usualDensity = 96 * 1024;
            Gtk::Settings::get_default()->property_gtk_xft_dpi() = usualDensity * textPercent / 100;
            // What fades in is there at once.
            Gtk::Settings::get_default()->property_gtk_enable_animations() = false;
            walk("light");
            Gtk::Settings::get_default()->property_gtk_application_prefer_dark_theme() = true;
            program.screen.press(GDK_KEY_Escape);
            walk("dark");
        });
    }

private:
    void walk(const std::string& scheme) {
        prefix = folder + "/" + scheme + "-";
        auto& main = program.window("Kelo");
        program.app.state->onLogin = true;
        keep(main, "login");
        program.app.state->busy = true;
        keep(main, "waiting");
        program.app.state->busy = false;
        program.app.state->error = "Cancelled.";
        keep(main, "error");
        program.app.state->error = longError;
        keep(main, "long-error");
        program.app.state->error = std::nullopt;
        auto& controls = program.app.page->pageControls;
        controls.setTitle("Inbox (3)");
        controls.setHistory(true, false);
        controls.setLoadProgress(0.4);
        keep(main, "loading");
        controls.setLoadProgress(std::nullopt);
        controls.setTitle("Your account");
        program.app.page->setForeignHost("accounts.example.com");
        keep(main, "foreign");
        program.screen.press(GDK_KEY_F6);
        program.app.page->setForeignHost("assistant.example.com." + std::string(200, 'x') +
                                         ".evil.example");
        keep(main, "foreign-long");
        program.app.page->setForeignHost(std::nullopt);
        controls.setTitle("");
        controls.setHistory(false, false);

        program.screen.press(GDK_KEY_F10);
        keep(main, "menu");
        program.screen.press(GDK_KEY_Right);
        keep(main, "menu-account");
        program.screen.press(GDK_KEY_Right);
        keep(main, "menu-view");
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the page has the keyboard",
                              [&] { return program.app.page->area.has_focus(); });
        program.screen.press(GDK_KEY_f, {GDK_KEY_Control_L});
        keep(main, "find");
        program.screen.type("abc");
        keep(main, "find-count");
        program.screen.press(GDK_KEY_Escape);
        downloading(main);
        program.host.openSettings();
        keep(program.window(translated("Settings")), "settings");
        program.window(translated("Settings")).close();
        program.host.openPermissions();
        keep(program.window(translated("Permissions")), "permissions");
        program.window(translated("Permissions")).close();
        PasskeysGallery(program, *inventory, [this](Gtk::Window& window, const std::string& name) {
            keep(window, name);
        }).walk();
        program.host.openShortcuts();
        keep(program.window(translated("Keyboard Shortcuts")), "shortcuts");
        program.window(translated("Keyboard Shortcuts")).close();
        program.host.openAbout();
        keep(program.window(translated("About Kelo")), "about");
        program.window(translated("About Kelo")).close();
        question({permission::Capability::microphone}, "microphone");
        question({permission::Capability::microphone, permission::Capability::camera}, "devices");
        alerts();
        pageDialogs();
        sheets();
        updates();
    }

    void downloading(Gtk::Window& main) {
        const unsigned report = list->begin("Annual report.pdf", [] {});
        list->progress(report, 3'100'000, 12'000'000);
        program.until("the amount is shown",
                      [&] { return withClass(main, "kelo-downloads") != nullptr; });
        keep(main, "download");
        const unsigned film = list->begin("Film.mp4", [] {});
        list->refuse("Archive of all letters that were ever written to anybody, "
                     "part one of many.tar.gz",
                     "The downloads folder cannot be written to. Change its permissions, or choose "
                     "another one in the settings of your desktop.");
        keep(main, "downloads");
        list->finish(report, "/tmp/Annual report.pdf");
        keep(main, "downloads-finished");
        const Gtk::TextDirection usual = Gtk::Widget::get_default_direction();
        Gtk::Widget::set_default_direction(Gtk::TextDirection::RTL);
        keep(main, "downloads-right-to-left");
        Gtk::Widget::set_default_direction(usual);
        list->cancel(film);
        list->dismissEnded();
    }

    void keep(Gtk::Window& window, const std::string& name) {
        program.settle();
        program.untilDrawn(window);
        program.untilDrawn(window);
        program.screen.save(prefix + name + ".png");
    }

    void question(std::vector<permission::Capability> capabilities, const std::string& name) {
        program.untilActive(program.window("Kelo"));
        gtk::GtkPermissionAsker asker;
        const auto asked =
            asker.ask(GTK_WIDGET(program.app.page->area.gobj()),
                      {"assistant.example.com", std::move(capabilities)}, [](auto) {});
        auto* const dialog = gtk::ModalWindow::topmost();
        program.untilActive(*dialog);
        keep(*dialog, name);
    }

    static Task<void> showAlert(gtk::GtkAlertPresenter& presenter, platform::Alert alert) {
        co_await presenter.runModal(std::move(alert));
    }

    void alert(platform::Alert alert, const std::string& name) {
        const std::string title = alert.messageText;
        spawn(showAlert(presenter, std::move(alert)));
        auto& dialog = program.window(title);
        program.untilActive(dialog);
        keep(dialog, name);
        dropSpawnedTasks();
    }

    void alerts() {
        platform::Alert prompt;
        prompt.messageText = "Bevestig registratie";
        prompt.informativeText =
            "Vul je wachtwoord óf een MFA-code in om deze passkey te registreren.";
        prompt.buttons = {"Registreer", "Annuleer"};
        prompt.accessoryView = platform::SecureTextField{240, 24, "Wachtwoord of MFA-code"};
        prompt.accessoryIsInitialFirstResponder = true;
        alert(prompt, "prompt");
        platform::Alert result;
        result.messageText = "Passkey";
        result.informativeText = "Passkey registered on this Mac.";
        alert(result, "result");
        result.informativeText = longError;
        alert(result, "result-long");
        while (result.informativeText.size() < 6000)
            result.informativeText += std::string(" ") + longError;
        alert(result, "result-endless");
    }

    void pageDialog(window::PageQuestion question, const std::string& title,
                    const std::string& name) {
        program.untilActive(program.window("Kelo"));
        gtk::GtkPageDialogs dialogs;
        const auto open = dialogs.show(question, program.window("Kelo").gobj(), [](const auto&) {});
        auto& dialog = program.window(title);
        program.untilActive(dialog);
        keep(dialog, "page-" + name);
    }

    void pageDialogs() {
        using Kind = window::PageQuestionKind;
        const std::string host = "assistant.example.com";
        const std::string says = translated("%1 says", {host});
        pageDialog({Kind::alert, host, "The conversation was saved."}, says, "alert");
        pageDialog({Kind::confirm, host, "Delete this conversation?\n\n- 12 messages\n- 3 files",
                    "", true},
                   says, "confirm-refusable");
        pageDialog({Kind::prompt, host, "What should the conversation be called?", "Untitled"},
                   says, "prompt");
        pageDialog({Kind::beforeUnload, host}, translated("Leave this page?"), "leave");
        window::PageQuestion endless{Kind::prompt, host, "", "", true};
        while (endless.message.size() < 6000)
            endless.message += std::string(longError) + "\n";
        pageDialog(endless, says, "endless");
        const std::string longHost = std::string(60, 'x') + "." + std::string(60, 'y') + ".example";
        pageDialog({Kind::alert, longHost, "שלום עולם"}, translated("%1 says", {longHost}),
                   "long-host");
    }

    static Task<void> converse(authenticator::PasskeySheet& sheet,
                               authenticator::ConsentRequest request, bool echo) {
        co_await sheet.confirm(std::move(request));
        authenticator::VerificationPrompt prompt{"Password: ", echo};
        co_await sheet.ask(std::move(prompt));
    }

    void sheets() {
        gtk::GtkPasskeySheetFactory factory(hurryingClock());
        auto sheet = factory.makeSheet(program.host.windows().front());
        authenticator::ConsentRequest request;
        request.relyingPartyIdentifier = "assistant.example.com";
        request.accountNames = {"demo@example.com"};
        spawn(converse(*sheet, request, false));
        auto& signIn = program.window(translated("Sign in with a passkey?"));
        program.untilActive(signIn);
        keep(signIn, "sheet-sign-in");
        program.screen.press(GDK_KEY_Return);
        program.until("a question", [&] {
            return textsIn(signIn).back() != "" && withClass(signIn, "password");
        });
        keep(signIn, "sheet-password");
        sheet->showError(translated("Wrong password. Try again."));
        keep(signIn, "sheet-wrong-password");
        program.screen.type("secret");
        program.screen.press(GDK_KEY_Return);
        program.until("an answer", [&] { return !withClass(signIn, "password"); });
        keep(signIn, "sheet-checking");
        sheet->showInformation("Swipe your finger over the fingerprint reader");
        keep(signIn, "sheet-finger");
        sheet.reset();

        sheet = factory.makeSheet(program.host.windows().front());
        request.ceremony = authenticator::Ceremony::registration;
        spawn(converse(*sheet, request, true));
        auto& create = program.window(translated("Create a passkey?"));
        program.untilActive(create);
        keep(create, "sheet-create");
        dropSpawnedTasks();
        sheet.reset();

        sheet = factory.makeSheet(program.host.windows().front());
        request.ceremony = authenticator::Ceremony::signIn;
        request.accountNames = {"demo@example.com", "someone.else@example.com",
                                "a.very.long.account.name.that.does.not.fit@subdomain.example.com"};
        spawn(converse(*sheet, request, false));
        auto& choose = program.window(translated("Sign in with a passkey?"));
        program.untilActive(choose);
        program.screen.press(GDK_KEY_Down);
        keep(choose, "sheet-accounts");
        dropSpawnedTasks();
    }

    template <typename T>
    static Task<void> wait(Task<T> answer) {
        co_await answer;
    }

    void keepUpdate(const std::string& name) {
        auto& window = program.window(translated("Software Update"));
        program.untilActive(window);
        keep(window, "update-" + name);
    }

    void updates() {
        using updater::ParagraphKind;
        gtk::GtkUserDriver driver(nullptr);
        driver.showChecking([] {});
        keepUpdate("checking");
        updater::UpdateOffer offer{"Kelo", "1.0", "1.1", {}};
        spawn(wait(driver.showOffer(offer, updater::CheckKind::userInitiated)));
        keepUpdate("offer-without-notes");
        offer.releaseNotes = {
            {ParagraphKind::heading, {{"What is new"}}},
            {ParagraphKind::listItem,
             {{"The voice widget opens over "}, {"full-screen", true}, {" windows, too."}}},
            {ParagraphKind::listItem,
             {{"Start it with "}, {"kelo --widget", false, false, true}, {"."}}},
            {ParagraphKind::body,
             {{"Thank you to everyone who wrote in, and "},
              {"please go on", false, true},
              {": "},
              {.text = "all that has changed", .link = "https://example.org/changes"},
              {"."}}},
            {ParagraphKind::code, {{.text = "kelo --quit\nkelo --background", .code = true}}}};
        spawn(wait(driver.showOffer(offer, updater::CheckKind::userInitiated)));
        keepUpdate("offer");
        offer.critical = true;
        spawn(wait(driver.showOffer(offer, updater::CheckKind::userInitiated)));
        keepUpdate("offer-critical");
        driver.showDownload({5300000, 17800000}, [] {});
        keepUpdate("download");
        driver.showDownload({5300000, std::nullopt}, [] {});
        keepUpdate("download-unknown");
        driver.showPreparing();
        keepUpdate("preparing");
        spawn(wait(driver.showReadyToRelaunch(offer)));
        keepUpdate("ready");
        spawn(wait(driver.askForAutomaticChecks("Kelo")));
        keepUpdate("automatic");
        spawn(wait(
            driver.showMessage("You are up to date", "Kelo 1.1 is the newest version there is.")));
        keepUpdate("up-to-date");
        spawn(wait(driver.showFailure("The update was not installed because its "
                                      "signature does not match. Try again later, or "
                                      "get it from where you got Kelo.")));
        keepUpdate("failure");
        dropSpawnedTasks();
    }

    std::string folder;
    std::string prefix;
    const std::shared_ptr<downloads::DownloadList> list = std::make_shared<downloads::DownloadList>(
        downloads::FileHandling{[](const std::string&) { return true; }, [](const std::string&) {},
                                [](const std::string&) {}});
    const std::shared_ptr<FakeInventory> inventory = std::make_shared<FakeInventory>();
    RunningProgram program{settingsWith(list, inventory)};
    gtk::GtkAlertPresenter presenter{program.host};
};

} // namespace
} // namespace kelo::tests

int main(int count, char** arguments) {
    if (count < 2 || count > 3) {
        std::cerr << "usage: gallery FOLDER [SIZE OF THE TEXT IN PERCENT]\n";
        return 2;
    }
    kelo::locale::followUserLocale();
    kelo::locale::findTranslations(KELO_BUILD_FOLDER);
    kelo::tests::Gallery(arguments[1]).show(count == 3 ? std::stoi(arguments[2]) : 100);
    return 0;
}
