#include "linux/gtk/main/ViewCommands.h"

#include "base/Translation.h"
#include "linux/gtk/kit/StateFile.h"
#include "linux/gtk/main/ContentArea.h"
#include "linux/gtk/main/FindBar.h"
#include "linux/window/HostedPage.h"
#include "linux/window/PageControls.h"

#include <gtkmm/eventcontrollerscroll.h>
#include <gtkmm/gestureclick.h>
#include <gtkmm/shortcutcontroller.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <string_view>
#include <vector>

namespace kelo::gtk {

namespace {

struct Command {
    const char* action;
    /// In the menu, of untranslated(); null for a command that only has keys.
    const char* label;
    /// The first one is shown beside the label.
    std::vector<const char*> keys;
    bool beginsSection = false;
    /// The engine scrolls the page with Alt and an arrow key, and so never passes them on.
    bool isBeforePage = false;
};

const std::vector<Command>& commands() {
    static const std::vector<Command> all{
        {"reload", untranslated("Reload"), {"F5", "<Control>r"}},
        {"reload-from-server", nullptr, {"<Control><Shift>r", "<Control>F5", "<Shift>F5"}},
        {"back", untranslated("Back"), {"<Alt>Left"}, false, true},
        {"forward", untranslated("Forward"), {"<Alt>Right"}, false, true},
        {"start-page", untranslated("Start Page"), {"<Alt>Home"}, false, true},
        {"find", untranslated("Find…"), {"<Control>f"}, true},
        {"find-next", nullptr, {"<Control>g", "F3"}},
        {"find-previous", nullptr, {"<Control><Shift>g", "<Shift>F3"}},
        {"print", untranslated("Print…"), {"<Control>p"}},
        {"zoom-in",
         untranslated("Zoom In"),
         {"<Control>plus", "<Control>equal", "<Control>KP_Add"},
         true},
        {"zoom-out", untranslated("Zoom Out"), {"<Control>minus", "<Control>KP_Subtract"}},
        {"usual-size", untranslated("Usual Size"), {"<Control>0", "<Control>KP_0"}},
        {"full-screen", untranslated("Full Screen"), {"F11"}, true},
    };
    return all;
}

constexpr std::array zoomLevels{0.5, 0.67, 0.8, 0.9, 1.0, 1.1, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};

/// The level that is so many steps above the factor, or below if negative.
double zoomAfter(double factor, int steps) {
    const auto nearest = std::ranges::min_element(
        zoomLevels, {}, [&](double level) { return std::abs(level - factor); });
    const auto index = std::distance(zoomLevels.begin(), nearest) + steps;
    const auto last = static_cast<std::ptrdiff_t>(zoomLevels.size()) - 1;
    return zoomLevels.at(static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(index, 0, last)));
}

constexpr const char* stateGroup = "page";
constexpr const char* zoomKey = "zoom";

constexpr unsigned backButton = 8;
constexpr unsigned forwardButton = 9;

} // namespace

ViewCommands::ViewCommands(Gtk::ApplicationWindow& window, ContentArea& content, FindBar& findBar,
                           StateFile& state)
    : window(window), content(content), findBar(findBar), state(state) {
    addActions();
    addKeys(Gtk::PropagationPhase::CAPTURE);
    addKeys(Gtk::PropagationPhase::BUBBLE);
    addMouse();
    historyObserver = std::make_shared<const std::function<void()>>([this] { followHistory(); });
    followHistory();
    restoreZoom();
}

Glib::RefPtr<Gio::MenuModel> ViewCommands::menu() {
    auto all = Gio::Menu::create();
    auto section = Gio::Menu::create();
    for (const auto& command : commands()) {
        if (!command.label)
            continue;
        if (command.beginsSection) {
            all->append_section({}, section);
            section = Gio::Menu::create();
        }
        const auto item =
            Gio::MenuItem::create(translated(command.label), std::string("win.") + command.action);
        item->set_attribute_value("accel",
                                  Glib::Variant<Glib::ustring>::create(command.keys.front()));
        section->append_item(item);
    }
    all->append_section({}, section);
    return all;
}

ShortcutGroup ViewCommands::shortcuts() {
    ShortcutGroup group{translated("View"), {}};
    for (const auto& command : commands())
        if (command.label)
            group.rows.push_back({translated(command.label), command.keys.front()});
    return group;
}

window::HostedPage* ViewCommands::page() const {
    return content.page();
}

void ViewCommands::addActions() {
    const auto add = [this](const char* name, void (*run)(window::HostedPage&)) {
        return window.add_action(name, [this, run] {
            if (auto* const shown = page())
                run(*shown);
        });
    };
    add("reload", [](auto& page) { page.reload(); });
    add("reload-from-server", [](auto& page) {
        if (page.answers())
            page.controls().reloadFromServer();
        else
            page.reload();
    });
    back = add("back", [](auto& page) { page.controls().goBack(); });
    forward = add("forward", [](auto& page) { page.controls().goForward(); });
    add("start-page", [](auto& page) { page.returnToService(); });
    window.add_action("usual-size", [this] { setZoom(1); });
    window.add_action("find", [this] { findBar.open(); });
    window.add_action("find-next", [this] { findBar.next(); });
    window.add_action("find-previous", [this] { findBar.previous(); });
    window.add_action("print", [this] {
        if (auto* const shown = page())
            shown->controls().print(static_cast<Gtk::Window&>(window).gobj());
    });
    window.add_action("zoom-in", [this] { zoomBy(1); });
    window.add_action("zoom-out", [this] { zoomBy(-1); });
    window.add_action("full-screen", [this] { toggleFullScreen(); });
}

// On its way down, a key is taken only from a page that could not take it itself.
void ViewCommands::addKeys(Gtk::PropagationPhase phase) {
    const bool isOnItsWayDown = phase == Gtk::PropagationPhase::CAPTURE;
    const auto controller = Gtk::ShortcutController::create();
    controller->set_propagation_phase(phase);
    for (const auto& command : commands()) {
        const auto run = [this, isOnItsWayDown, &command](Gtk::Widget&, const Glib::VariantBase&) {
            const auto* const shown = page();
            const bool isFirst = command.isBeforePage || (shown && !shown->answers());
            return isFirst == isOnItsWayDown &&
                   window.activate_action(std::string("win.") + command.action);
        };
        for (const auto* key : command.keys)
            controller->add_shortcut(Gtk::Shortcut::create(Gtk::ShortcutTrigger::parse_string(key),
                                                           Gtk::CallbackAction::create(run)));
    }
    window.add_controller(controller);
}

void ViewCommands::addMouse() {
    for (const unsigned button : {backButton, forwardButton}) {
        const auto click = Gtk::GestureClick::create();
        click->set_button(button);
        click->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
        click->signal_pressed().connect([this, button](int, double, double) {
            window.activate_action(button == backButton ? "win.back" : "win.forward");
        });
        content.add_controller(click);
    }
    const auto wheel = Gtk::EventControllerScroll::create();
    wheel->set_flags(Gtk::EventControllerScroll::Flags::VERTICAL);
    wheel->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    wheel->signal_scroll().connect(
        [this, controller = wheel.get()](double, double down) {
            const auto held = controller->get_current_event_state();
            if ((held & Gdk::ModifierType::CONTROL_MASK) == Gdk::ModifierType{}) {
                scrolled = 0;
                return false;
            }
            scrolled -= down;
            const int steps = static_cast<int>(scrolled);
            scrolled -= steps;
            zoomBy(steps);
            return true;
        },
        false);
    content.add_controller(wheel);
}

void ViewCommands::followHistory() {
    auto* const shown = page();
    if (shown)
        shown->controls().setHistoryObserver(historyObserver);
    back->set_enabled(shown && shown->controls().canGoBack());
    forward->set_enabled(shown && shown->controls().canGoForward());
}

void ViewCommands::restoreZoom() {
    const auto percent = state.number(stateGroup, zoomKey);
    auto* const shown = page();
    // Another program may have written the file.
    if (shown && percent)
        shown->controls().setZoom(zoomAfter(*percent / 100.0, 0));
}

void ViewCommands::setZoom(double factor) {
    auto* const shown = page();
    if (!shown)
        return;
    shown->controls().setZoom(factor);
    state.setNumber(stateGroup, zoomKey, static_cast<int>(std::lround(factor * 100)));
}

void ViewCommands::zoomBy(int steps) {
    auto* const shown = page();
    if (shown && steps != 0)
        setZoom(zoomAfter(shown->controls().zoom(), steps));
}

void ViewCommands::toggleFullScreen() {
    if (window.is_fullscreen())
        window.unfullscreen();
    else
        window.fullscreen();
}

} // namespace kelo::gtk
