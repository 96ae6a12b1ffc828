#include "component/panel/Backdrop.h"
#include "component/panel/PanelFixture.h"
#include "linux/webkit/WebKitEmbeddedView.h"

#include <webkit/webkit.h>

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

TEST_F(PanelWebViewTest, MayBeLetGoOfBeforeItsPanel) {
    showPage();
    until("the page has the focus", [this] { return title().starts_with("true visible"); });
    view.reset();
    panel.reset();
}

} // namespace

} // namespace kelo::test
