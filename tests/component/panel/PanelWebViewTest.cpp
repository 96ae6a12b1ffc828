#include "component/panel/Backdrop.h"
#include "component/panel/PanelFixture.h"
#include "linux/gobject/MainLoopSource.h"
#include "linux/webkit/WebKitEmbeddedView.h"
#include "linux/window/Toplevels.h"

#include <gdk/x11/gdkx.h>

#include <X11/keysym.h>
#include <webkit/webkit.h>

#include <chrono>
#include <utility>

namespace kelo::test {

namespace {

/// A page in the panel that puts into its title what it notices.
class PanelWebViewTest : public PanelFixture {
protected:
    PanelWebViewTest() {
        panel->setContentView({view, 18, 18, true});
        webkit_web_view_load_html(native(), page, nullptr);
    }

    WebKitWebView* native() const {
        return WEBKIT_WEB_VIEW(dynamic_cast<window::HostedWidget&>(*view).widget());
    }
    std::string title() const {
        const char* const text = webkit_web_view_get_title(native());
        return text ? text : "";
    }
    screen::WindowId pageWindow() const {
        return gdk_x11_surface_get_xid(
            gtk_native_get_surface(gtk_widget_get_native(GTK_WIDGET(native()))));
    }
    /// Whether another window of ours has the keyboard.
    bool isDialogActive() const {
        GtkWindow* const active = window::activeToplevel();
        return active &&
               GTK_WIDGET(active) != GTK_WIDGET(gtk_widget_get_root(GTK_WIDGET(native())));
    }
    /// Closes each dialog as soon as it has the keyboard. From within the main loop, because the
    /// print dialog runs one of its own.
    void closeDialogs(const std::string& name) {
        jobs.after(std::chrono::milliseconds(20), [this, name] {
            if (isDialogActive()) {
                if (!std::exchange(dialogSeen, true)) {
                    EXPECT_FALSE(contentAt(box().x + 300, box().y + 500)) << name;
                    EXPECT_TRUE(panel->isVisible()) << name;
                    picture(name);
                }
                keyboard.press(XK_Escape);
                connection.flush();
            }
            closeDialogs(name);
        });
    }
    void showPage() {
        panel->makeKeyAndOrderFront();
        panel->makeFirstResponder(view);
    }

    static constexpr const char* page = R"(<!doctype html>
<body style="margin:0;background:#3366cc"><input id=field autofocus>
<script>
function note() { document.title = document.hasFocus() + " " + document.visibilityState + " " + field.value; }
onfocus = onblur = oninput = note; document.onvisibilitychange = note; note();
</script>)";

    static constexpr const char* pageWithDialogs = R"page(<!doctype html>
<style>body { margin: 0; background: #3366cc }
body > * { position: absolute; left: 10px; width: 200px; height: 80px }</style>
<body><input id=file type=file style="top:10px"><input id=colour type=color style="top:110px">
<button id=print style="top:210px" onclick="window.print()">Print</button><input id=field style="top:360px">
<script>
function note() { document.title = document.hasFocus() + " " + document.activeElement.id + " " + field.value; }
onfocus = onblur = oninput = note; addEventListener("focusin", note); note();
</script>)page";

    bool dialogSeen = false;
    gobject::ScheduledJob jobs;
    webkit::WebKitSession session;
    std::shared_ptr<platform::EmbeddedWebView> view = std::make_shared<webkit::WebKitEmbeddedView>(
        session, platform::Rectangle{0, 0, 640, 620}, platform::WebViewConfiguration{});
};

TEST_F(PanelWebViewTest, HasTheKeyboardAndKnowsItAndWhetherItIsShown) {
    screen::OtherProgram other;
    settle(other);
    const Backdrop backdrop;
    for (int round = 0; round < 2; ++round) {
        showPage();
        until("the page is drawn", [this] { return contentAt(box().x + 300, box().y + 400); });
        until("the page has the focus", [this] { return title().starts_with("true visible"); });
        keyboard.type("a");
        connection.flush();
        const std::string expected = "true visible " + std::string(std::size_t(round) + 1, 'a');
        until("the page has the key", [&] { return title() == expected; });
        picture("page");
        EXPECT_FALSE(contentAt(box().x + 1, box().y + 1));
        EXPECT_EQ(colorAt(box().x + 1, box().y + 1), Backdrop::color);
        panel->orderOut();
        until("the page knows that it is hidden",
              [this] { return title().find("hidden") != std::string::npos; });
        typeInto(other, "b");
    }
}

TEST_F(PanelWebViewTest, StepsAsideForDialogsThatItsPageOpensAndIsTypedIntoAfterThem) {
    screen::OtherProgram other;
    settle(other);
    webkit_web_view_load_html(native(), pageWithDialogs, nullptr);
    showPage();
    for (const auto& [dialog, row] : {std::pair("file chooser", 0), std::pair("colour chooser", 1),
                                      std::pair("print dialog", 2)}) {
        until("the page is drawn", [this] { return contentAt(box().x + 300, box().y + 500); });
        until("the page has the focus", [this] { return title().starts_with("true"); });
        dialogSeen = false;
        closeDialogs(dialog);
        pointer.click({box().x + 50, box().y + 50 + 100 * row});
        until(std::string("the panel has the keyboard again after the ") + dialog,
              [this] { return dialogSeen && windows.focused() == pageWindow(); });
        jobs.cancel();
        pointer.click({box().x + 50, box().y + 400});
        until("the field has the focus", [this] { return title().starts_with("true field"); });
        // The window manager may be busy with the dialog still, and take a key away.
        const std::string before = title();
        auto next = std::chrono::steady_clock::now();
        until("the page gets keys", [&] {
            if (std::chrono::steady_clock::now() >= next) {
                keyboard.type("a");
                connection.flush();
                next = std::chrono::steady_clock::now() + std::chrono::seconds(2);
            }
            return title().starts_with("true field a") && title() != before;
        });
    }
    panel->orderOut();
    until("the other program has the keyboard again",
          [&] { return windows.focused() == other.window(); });
}

TEST_F(PanelWebViewTest, MayBeLetGoOfBeforeItsPanel) {
    showPage();
    until("the page has the focus", [this] { return title().starts_with("true visible"); });
    view.reset();
    panel.reset();
}

} // namespace

} // namespace kelo::test
