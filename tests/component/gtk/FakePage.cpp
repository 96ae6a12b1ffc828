#include "component/gtk/FakePage.h"

#include <gtkmm/gestureclick.h>

namespace kelo::tests {

FakePage::FakePage() : FakeWebView({}, {}) {
    area.set_focusable();
    area.set_draw_func([](const Cairo::RefPtr<Cairo::Context>& context, int, int) {
        context->set_source_rgb(1, 0, 1);
        context->paint();
    });
    auto click = Gtk::GestureClick::create();
    click->signal_pressed().connect([this](int, double, double) {
        ++clicks;
        area.grab_focus();
    });
    area.add_controller(click);
}

void FakePage::setForeignHost(std::optional<std::string> newHost) {
    host = std::move(newHost);
    if (const auto told = pageObserver.lock())
        (*told)();
}

void FakePage::setHangs(bool nowHangs) {
    hangs = nowHangs;
    if (const auto told = pageObserver.lock())
        (*told)();
}

} // namespace kelo::tests
