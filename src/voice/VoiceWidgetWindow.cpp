#include "voice/VoiceWidgetWindow.h"

#include "platform/Desktop.h"
#include "service/ServiceEndpoints.h"
#include "voice/WeakScriptHandler.h"

#include <string>

namespace kelo::voice {

using platform::Desktop;
using platform::EventPointer;
using platform::PermissionDecision;

namespace {

constexpr platform::Size size{640, 620};
constexpr double cornerRadius = 18;
/// Between the lower edges of the panel and of the work area, in points.
constexpr double bottomMargin = 16;
constexpr const char* handlerName = "kelo";

platform::PanelDescription description() {
    platform::PanelDescription panel;
    panel.contentRectangle = {0, 0, size.width, size.height};
    panel.styleMask = platform::window_style::nonactivatingPanel;
    panel.backing = platform::BackingStore::buffered;
    panel.defer = false;
    panel.level = platform::WindowLevel::floating;
    panel.floatingPanel = true;
    panel.hidesOnDeactivate = false;
    panel.opaque = false;
    panel.backgroundColor = platform::BackgroundColor::clear;
    panel.hasShadow = true;
    panel.collectionBehavior = platform::collection_behavior::canJoinAllSpaces |
                               platform::collection_behavior::fullScreenAuxiliary;
    return panel;
}

} // namespace

bool VoiceWidgetWindow::isVisible() const {
    return panel && (*panel)->isVisible();
}

void VoiceWidgetWindow::show() {
    const KeyablePanel& shown = ensurePanel();
    if (!shown->isVisible()) {
        if (webView) {
            // In this order: the page that is left must not listen again.
            webView->load(platform::UrlRequest{service::widgetURL()});
            webView->setAllowsMediaCapture(true);
        }
        place();
        hideWhenLocked();
    }
    shown->makeKeyAndOrderFront();
    if (webView)
        shown->makeFirstResponder(webView);
}

void VoiceWidgetWindow::hide() {
    lockObservation = Observation();
    if (panel)
        (*panel)->orderOut();
    // Nobody can see any more that the page listens.
    if (webView)
        webView->setAllowsMediaCapture(false);
    if (onClose)
        onClose();
}

const KeyablePanel& VoiceWidgetWindow::ensurePanel() {
    if (panel)
        return *panel;
    const KeyablePanel made(description());
    webView = makeWebView();
    made->setContentView(
        {webView, platform::autoresizing::widthSizable | platform::autoresizing::heightSizable,
         cornerRadius, true});
    made->setScreensHandler([weak = weak_from_this()] {
        if (const auto self = weak.lock(); self && self->isVisible())
            self->place();
    });
    made->setCloseHandler([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->hide();
    });
    escMonitor = watchForEscape();
    return panel.emplace(made);
}

std::shared_ptr<platform::EmbeddedWebView> VoiceWidgetWindow::makeWebView() {
    platform::WebViewConfiguration configuration;
    // Shared with the main window's view, so that signing in there counts here, too.
    configuration.websiteDataStore = platform::WebsiteDataStore::persistentDefault;
    configuration.allowsContentJavaScript = true;
    // The service speaks as soon as it is asked, which may be without a click.
    configuration.allowsAutoplay = true;
    configuration.linksOpenInBrowser = true;
    configuration.scriptMessageHandlers.push_back(
        {std::make_shared<WeakScriptHandler>(weak_from_this()), handlerName});
    auto view =
        Desktop::current().makeWebView({0, 0, size.width, size.height}, std::move(configuration));
    view->setUserInterfaceDelegate(weak_from_this());
    return view;
}

std::shared_ptr<platform::EventMonitor> VoiceWidgetWindow::watchForEscape() {
    return Desktop::current().eventMonitors().addLocalMonitor(
        platform::event_mask::keyDown,
        [weak = weak_from_this()](const EventPointer& event) -> EventPointer {
            if (event->keyCode != platform::key::escape)
                return event;
            const auto self = weak.lock();
            const platform::Window* const ours =
                self && self->panel ? self->panel->window().get() : nullptr;
            if (event->window.get() != ours)
                return event;
            if (self)
                self->hide();
            return nullptr;
        });
}

void VoiceWidgetWindow::hideWhenLocked() {
    lockObservation = Desktop::current().userSession().observeLocking([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->hide();
    });
}

void VoiceWidgetWindow::place() {
    const auto screen = Desktop::current().mainScreen();
    if (!screen)
        return;
    const platform::Rectangle& free = screen->visibleFrame;
    (*panel)->setFrameOrigin({free.midX() - size.width / 2, free.minY() + bottomMargin});
}

void VoiceWidgetWindow::requestMediaCapturePermission(platform::EmbeddedWebView&,
                                                      const platform::SecurityOrigin& origin,
                                                      platform::MediaCaptureType,
                                                      DecisionHandler decisionHandler) {
    decisionHandler(origin.host == service::relyingPartyIdentifier() ? PermissionDecision::grant
                                                                     : PermissionDecision::deny);
}

void VoiceWidgetWindow::didReceiveScriptMessage(platform::EmbeddedWebView&,
                                                const platform::ScriptMessage& message) {
    if (message.name != handlerName)
        return;
    const auto* const text = std::get_if<std::string>(&message.body);
    if (text && *text == "close")
        hide();
}

} // namespace kelo::voice
