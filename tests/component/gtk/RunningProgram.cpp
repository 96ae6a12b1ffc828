#include "component/gtk/RunningProgram.h"

#include <gtest/gtest.h>

#include <gtkmm/label.h>

#include <chrono>
#include <exception>
#include <stdexcept>

namespace kelo::tests {

namespace {

constexpr std::chrono::seconds deadline{20};

} // namespace

RunningProgram::RunningProgram(gtk::HostSettings settings)
    : host({"kelo"}, {}, std::move(settings)) {}

RunningProgram::~RunningProgram() {
    dropSpawnedTasks();
    // What was posted for the app must not wait for the next test: a window that was opened last
    // still has to tell that it appeared.
    settle();
}

void RunningProgram::run(std::function<void()> body) {
    mainLoop.post([this, body = std::move(body)] {
        inBody(body);
        dropSpawnedTasks();
        host.terminate();
    });
    status = host.run(app);
}

void RunningProgram::runToItsOwnEnd(std::function<void()> body) {
    mainLoop.post([this, body = std::move(body)] {
        if (!inBody(body))
            host.terminate();
    });
    status = host.run(app);
}

bool RunningProgram::inBody(const std::function<void()>& body) {
    try {
        until("the main window has appeared", [this] { return app.count("appear") > 0; });
        untilActive(window("Kelo"));
        body();
        return true;
    } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
        return false;
    }
}

void RunningProgram::until(const std::string& what, const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    // Not every change on the display is an event of this program, so the condition is also checked
    // periodically.
    const guint tick = g_timeout_add(
        5, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool holds = condition();
    while (!holds && std::chrono::steady_clock::now() < end) {
        g_main_context_iteration(nullptr, TRUE);
        holds = condition();
    }
    g_source_remove(tick);
    if (!holds)
        throw std::runtime_error("never happened: " + what);
}

void RunningProgram::settle() {
    // All jobs posted so far run before this one. Drawings that they requested need a frame.
    bool turned = false;
    g_idle_add_full(
        G_PRIORITY_LOW,
        [](gpointer flag) -> gboolean {
            *static_cast<bool*>(flag) = true;
            return G_SOURCE_REMOVE;
        },
        &turned, nullptr);
    until("the main loop comes to rest", [&turned] { return turned; });
}

std::vector<Gtk::Window*> RunningProgram::windowsOnScreen() {
    std::vector<Gtk::Window*> found;
    for (auto* window : Gtk::Window::list_toplevels())
        if (window->get_mapped())
            found.push_back(window);
    return found;
}

Gtk::Window& RunningProgram::window(const std::string& title) {
    Gtk::Window* found = nullptr;
    until("a window \"" + title + "\"", [&] {
        for (auto* window : windowsOnScreen())
            if (window->get_title().raw() == title)
                found = window;
        return found != nullptr;
    });
    return *found;
}

void RunningProgram::untilActive(Gtk::Window& window) {
    until("\"" + window.get_title().raw() + "\" has the keyboard",
          [&] { return window.is_active(); });
    untilDrawn(window);
}

void RunningProgram::untilDrawn(Gtk::Window& window) {
    // One frame for the layout, one that shows it.
    for (int frame = 0; frame < 2; ++frame) {
        bool painted = false;
        auto* clock = gtk_widget_get_frame_clock(GTK_WIDGET(window.gobj()));
        const gulong handler = g_signal_connect(
            clock, "after-paint",
            G_CALLBACK(+[](GdkFrameClock*, gpointer flag) { *static_cast<bool*>(flag) = true; }),
            &painted);
        window.queue_draw();
        until("a frame is drawn", [&painted] { return painted; });
        g_signal_handler_disconnect(clock, handler);
    }
    gdk_display_sync(gdk_display_get_default());
}

RunningProgram::Box RunningProgram::boxOf(Gtk::Widget& widget) {
    // The window, or the menu, whose surface the widget is drawn on.
    GtkNative* native = gtk_widget_get_native(widget.gobj());
    graphene_rect_t bounds;
    if (!native || !gtk_widget_compute_bounds(widget.gobj(), GTK_WIDGET(native), &bounds))
        throw std::runtime_error("the widget is on no surface");
    double offsetX = 0;
    double offsetY = 0;
    gtk_native_get_surface_transform(native, &offsetX, &offsetY);
    const auto [x, y] = screen.origin(gtk_native_get_surface(native));
    const int scale = widget.get_scale_factor();
    const auto pixels = [scale](double points) {
        return static_cast<int>(std::lround(points * scale));
    };
    return {x + pixels(offsetX + bounds.origin.x), y + pixels(offsetY + bounds.origin.y),
            pixels(bounds.size.width), pixels(bounds.size.height)};
}

void RunningProgram::click(Gtk::Widget& widget) {
    until("the widget has its place", [&] { return boxOf(widget).width > 0; });
    auto* window = dynamic_cast<Gtk::Window*>(widget.get_root());
    if (!window)
        throw std::runtime_error("the widget is in no window");
    // The window manager may still move the window, and the layout its parts.
    Box box;
    until("the widget has come to rest", [&] {
        const Box before = boxOf(widget);
        untilDrawn(*window);
        box = boxOf(widget);
        return box == before;
    });
    screen.click(box.x + box.width / 2, box.y + box.height / 2);
}

SteadyNow hurryingClock() {
    return [time = std::chrono::steady_clock::time_point{}]() mutable {
        return time += std::chrono::hours(1);
    };
}

std::vector<Gtk::Widget*> widgetsIn(Gtk::Widget& root) {
    std::vector<Gtk::Widget*> found{&root};
    for (auto* child = root.get_first_child(); child; child = child->get_next_sibling()) {
        const auto below = widgetsIn(*child);
        found.insert(found.end(), below.begin(), below.end());
    }
    return found;
}

std::vector<std::string> textsIn(Gtk::Widget& root) {
    std::vector<std::string> texts;
    for (auto* label : visibleIn<Gtk::Label>(root))
        texts.push_back(label->get_text());
    return texts;
}

namespace {

bool tells(Gtk::Widget& widget, GtkAccessibleProperty property, const std::string& text) {
    char* different =
        gtk_test_accessible_check_property(GTK_ACCESSIBLE(widget.gobj()), property, text.c_str());
    const bool same = different == nullptr;
    g_free(different);
    return same;
}

} // namespace

bool isNamed(Gtk::Widget& widget, const std::string& name) {
    return tells(widget, GTK_ACCESSIBLE_PROPERTY_LABEL, name);
}

bool isDescribed(Gtk::Widget& widget, const std::string& text) {
    return tells(widget, GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, text);
}

Gtk::Label* labelSaying(Gtk::Widget& root, const std::string& text) {
    for (auto* label : visibleIn<Gtk::Label>(root))
        if (label->get_text().raw() == text)
            return label;
    return nullptr;
}

bool isBrokenWithoutHyphen(Gtk::Label& label) {
    auto* const layout = label.get_layout()->gobj();
    int glyphs = 0;
    for (auto* line = pango_layout_get_lines_readonly(layout); line; line = line->next)
        for (auto* run = static_cast<PangoLayoutLine*>(line->data)->runs; run; run = run->next)
            glyphs += static_cast<PangoGlyphItem*>(run->data)->glyphs->num_glyphs;
    return pango_layout_get_line_count(layout) > 1 &&
           glyphs == static_cast<int>(label.get_text().size());
}

Gtk::Button* buttonNamed(Gtk::Widget& root, const std::string& name) {
    for (auto* button : visibleIn<Gtk::Button>(root))
        if (button->get_label().raw() == name || isNamed(*button, name))
            return button;
    return nullptr;
}

Gtk::Widget* withClass(Gtk::Widget& root, const std::string& cssClass) {
    for (auto* widget : visibleIn<Gtk::Widget>(root))
        if (widget->has_css_class(cssClass))
            return widget;
    return nullptr;
}

} // namespace kelo::tests
