#include "component/webkit/MainWindowFixture.h"

#include <gdk/x11/gdkx.h>
#include <giomm/menu.h>
#include <glibmm/init.h>
#include <gtkmm/application.h>

namespace kelo::test {

namespace {

platform::OverlayDescription overlay() {
    platform::OverlayDescription overlay;
    overlay.button.label = "Sign in with passkey";
    overlay.button.labelMaximumWidth = 320;
    overlay.padding = 16;
    overlay.bottomPadding = 28;
    return overlay;
}

Glib::RefPtr<Gio::Menu> menu() {
    auto items = Gio::Menu::create();
    items->append("Nothing", "app.nothing");
    auto bar = Gio::Menu::create();
    bar->append_submenu("Kelo", items);
    return bar;
}

} // namespace

void MainWindowFixture::SetUpTestSuite() {
    Glib::set_init_to_users_preferred_locale(false);
    // The windows need one that lives as long as the process.
    static const auto application = Gtk::Application::create("app.kelo.Test");
    application->register_application();
}

MainWindowFixture::~MainWindowFixture() {
    if (window)
        window->leaveWebView();
    window.reset();
}

void MainWindowFixture::openInMainWindow(std::map<std::string, std::string> pages,
                                         platform::WebViewConfiguration configuration) {
    server = site(std::move(pages));
    makeView(server->url(), std::move(configuration));
    group.defaultSize = {700, 500};
    group.content.body = [this] {
        return platform::WebContentDescription{view, overlay(), {300, 200}};
    };
    window = std::make_unique<gtk::MainWindow>(group, menu(), state, [] {});
    window->present();
    window->showContent();
    ASSERT_TRUE(loop.runUntil([this] { return gtk_widget_get_mapped(GTK_WIDGET(native())); }));
    open(server->url("/"));
    ASSERT_TRUE(loop.runUntil([this] {
        window->present();
        return window->is_active();
    }));
    ASSERT_TRUE(waitForScript("document.hasFocus()", "true"));
}

void MainWindowFixture::press(const std::string& key,
                              const std::vector<std::string>& modifiers) const {
    std::vector<screen::KeySymbol> held;
    for (const std::string& name : modifiers)
        held.push_back(screen::keySymbol(name));
    keyboard.press(screen::keySymbol(key), held);
    connection.sync();
}

// The page answers in the order in which it was asked.
void MainWindowFixture::settle() {
    const auto untilIdle = [] {
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
    };
    untilIdle();
    evaluate("1");
    untilIdle();
}

screen::Point MainWindowFixture::onScreen(GtkWidget* widget, double x, double y) {
    GtkNative* const native = gtk_widget_get_native(widget);
    double left = 0;
    double top = 0;
    gtk_widget_translate_coordinates(widget, GTK_WIDGET(native), x, y, &x, &y);
    gtk_native_get_surface_transform(native, &left, &top);
    GdkSurface* const surface = gtk_native_get_surface(native);
    auto* const display = gdk_x11_display_get_xdisplay(gdk_surface_get_display(surface));
    int originX = 0;
    int originY = 0;
    ::Window child = 0;
    XTranslateCoordinates(display, gdk_x11_surface_get_xid(surface), DefaultRootWindow(display), 0,
                          0, &originX, &originY, &child);
    return {originX + static_cast<int>(left + x), originY + static_cast<int>(top + y)};
}

screen::Point MainWindowFixture::placeOf(const std::string& selector) {
    const auto middle = [&](const char* start, const char* size) {
        return std::stod(evaluate("(() => { const box = document.querySelector('" + selector +
                                  "').getBoundingClientRect(); return box." + start + " + box." +
                                  size + " / 2; })()"));
    };
    return onScreen(GTK_WIDGET(native()), middle("left", "width"), middle("top", "height"));
}

GtkWidget* MainWindowFixture::childOfView(std::string_view typeName) const {
    for (GtkWidget* child = gtk_widget_get_first_child(GTK_WIDGET(native())); child;
         child = gtk_widget_get_next_sibling(child))
        if (G_OBJECT_TYPE_NAME(child) == typeName && gtk_widget_get_mapped(child))
            return child;
    return nullptr;
}

} // namespace kelo::test
