#include "component/panel/PanelFixture.h"

#include <gdk/x11/gdkx.h>

#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace kelo::test {

platform::PanelDescription voicePanel() {
    platform::PanelDescription panel;
    panel.contentRectangle = {0, 0, 640, 620};
    panel.styleMask = platform::window_style::nonactivatingPanel;
    panel.canBecomeKeyWindow = true;
    panel.level = platform::WindowLevel::floating;
    panel.floatingPanel = true;
    panel.opaque = false;
    panel.backgroundColor = platform::BackgroundColor::clear;
    panel.hasShadow = true;
    panel.collectionBehavior = platform::collection_behavior::canJoinAllSpaces |
                               platform::collection_behavior::fullScreenAuxiliary;
    return panel;
}

void PanelFixture::SetUpTestSuite() {
    const screen::XConnection connection;
    const screen::Windows windows(connection);
    if (hasManager() && !TestMainLoop().runUntil([&] { return windows.hasManager(); }))
        throw std::runtime_error(manager() + " did not start");
    gtk_init();
}

PanelFixture::PanelFixture()
    : content(std::make_shared<FakeContent>()), panel(panels.makePanel(voicePanel())) {
    using namespace platform::autoresizing;
    panel->setContentView({content, widthSizable | heightSizable, 18, true});
    panel->setFrameOrigin({320, 120});
}

std::string PanelFixture::manager() {
    const char* const name = std::getenv("KELO_WINDOW_MANAGER");
    return name ? name : "none";
}

void PanelFixture::until(const std::string& what, const std::function<bool()>& condition) {
    // Generous, because machines that build beside it are slow; the loop's own limit is half of it.
    if (!loop.runUntil(condition) && !loop.runUntil(condition))
        throw std::runtime_error("never happened: " + what + "\n" +
                                 screen::Windows::picture(windows.all()));
}

void PanelFixture::digest() {
    gdk_display_sync(gdk_display_get_default());
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    gdk_display_sync(gdk_display_get_default());
}

void PanelFixture::show() {
    panel->makeKeyAndOrderFront();
    panel->makeFirstResponder(content);
    until("the panel is drawn", [this] { return contentAt(box().x + 20, box().y + 300); });
    until("the panel has the keyboard", [this] { return windows.focused() == panelWindow(); });
}

std::optional<screen::Point> PanelFixture::showAndLookEarly() {
    struct Look {
        const PanelFixture& fixture;
        bool taken = false;
        std::optional<screen::Point> seen = std::nullopt;
    } look{*this};
    GtkRoot* const root = gtk_widget_get_root(content->widget());
    GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(root));
    const auto take = +[](GdkToplevel*, GdkToplevelSize*, Look* look) {
        if (std::exchange(look->taken, true))
            return;
        if (look->fixture.windows.describe(look->fixture.panelWindow()).isMapped)
            look->seen = look->fixture.corner();
    };
    const gulong handler =
        g_signal_connect(surface, "compute-size", reinterpret_cast<GCallback>(take), &look);
    panel->makeKeyAndOrderFront();
    g_signal_handler_disconnect(surface, handler);
    EXPECT_TRUE(look.taken) << "the toolkit has not asked for the size";
    return look.seen;
}

void PanelFixture::hide() {
    panel->orderOut();
    until("the panel is gone", [this] { return !windows.describe(panelWindow()).isMapped; });
}

void PanelFixture::giveKeyboardTo(screen::OtherProgram& program) {
    program.takeKeyboard();
    until("the other program has the keyboard, and the manager knows", [&] {
        const auto active = windows.active();
        return windows.focused() == program.window() &&
               (!hasManager() || (active && active->identifier == program.window()));
    });
}

void PanelFixture::settle(screen::OtherProgram& program) {
    const auto shown = [&] {
        program.listen();
        return program.isExposed();
    };
    until("the other program is shown", shown);
    giveKeyboardTo(program);
    program.goToPlace();
    // This manager gives the first window the whole screen.
    if (manager() == "dwm")
        return;
    until("the other program is where it wants to be", [&] {
        const auto origin = windows.describe(program.window()).origin;
        return std::abs(origin.x - program.place().x) < 60 &&
               std::abs(origin.y - program.place().y) < 60;
    });
}

void PanelFixture::typeInto(screen::OtherProgram& program, const std::string& text) {
    const std::string before = program.typed();
    keyboard.type(text);
    connection.flush();
    until("\"" + text + "\" arrives at the other program", [&] {
        program.listen();
        return program.typed() == before + text;
    });
}

void PanelFixture::typeIntoPanel(const std::string& text) {
    content->clear();
    keyboard.type(text);
    connection.flush();
    until("\"" + text + "\" arrives in the panel", [&] { return content->typed() == text; });
}

screen::WindowId PanelFixture::panelWindow() const {
    GtkRoot* const root = gtk_widget_get_root(content->widget());
    GdkSurface* const surface = root ? gtk_native_get_surface(GTK_NATIVE(root)) : nullptr;
    return surface ? gdk_x11_surface_get_xid(surface) : 0;
}

PanelFixture::Box PanelFixture::box() const {
    const auto frame = panel->frame();
    const double scale = gtk_widget_get_scale_factor(content->widget());
    const double top = connection.height() - (frame.y + frame.height) * scale;
    return {int(frame.x * scale), int(top), int(frame.width * scale), int(frame.height * scale)};
}

void PanelFixture::picture(const std::string& name) const {
    if (const char* const folder = std::getenv("KELO_PICTURES"))
        screen::Picture(connection)
            .save(std::string(folder) + "/" + manager() + "-" + name + ".png");
}

} // namespace kelo::test
