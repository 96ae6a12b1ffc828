#include "linux/webkit/controls/WebKitPageControls.h"

#include "linux/gobject/GObjectPointer.h"

#include <utility>

namespace kelo::webkit {

namespace {

constexpr guint anyCase = WEBKIT_FIND_OPTIONS_CASE_INSENSITIVE | WEBKIT_FIND_OPTIONS_WRAP_AROUND;

} // namespace

WebKitPageControls::WebKitPageControls(WebKitWebView* view)
    : view(view), finder(webkit_web_view_get_find_controller(view)) {
    using Self = WebKitPageControls*;
    for (const char* signal :
         {"notify::title", "notify::is-loading", "notify::estimated-load-progress"})
        connections.push_back(gobject::connectSignal(
            view, signal, +[](WebKitWebView*, GParamSpec*, Self self) { self->tellLoadObserver(); },
            this));
    connections.push_back(gobject::connectSignal(
        view, "load-changed",
        +[](WebKitWebView*, WebKitLoadEvent, Self self) {
            self->isLoadGivenUp = false;
            self->tellLoadObserver();
        },
        this));
    connections.push_back(gobject::connectSignal(
        webkit_web_view_get_back_forward_list(view), "changed",
        +[](WebKitBackForwardList*, WebKitBackForwardListItem*, gpointer, Self self) {
            if (const auto told = self->historyObserver.lock())
                (*told)();
        },
        this));
    connections.push_back(gobject::connectSignal(
        finder, "found-text",
        +[](WebKitFindController*, guint places, Self self) { self->found(places); }, this));
    connections.push_back(gobject::connectSignal(
        finder, "failed-to-find-text", +[](WebKitFindController*, Self self) { self->found(0); },
        this));
}

std::string WebKitPageControls::title() const {
    const char* const title = webkit_web_view_get_title(view);
    return title ? title : "";
}

std::optional<double> WebKitPageControls::loadProgress() const {
    if (isLoadGivenUp || !webkit_web_view_is_loading(view))
        return std::nullopt;
    return webkit_web_view_get_estimated_load_progress(view);
}

void WebKitPageControls::setLoadObserver(std::weak_ptr<const std::function<void()>> observer) {
    loadObserver = std::move(observer);
}

bool WebKitPageControls::canGoBack() const {
    return webkit_web_view_can_go_back(view);
}

bool WebKitPageControls::canGoForward() const {
    return webkit_web_view_can_go_forward(view);
}

void WebKitPageControls::goBack() {
    webkit_web_view_go_back(view);
}

void WebKitPageControls::goForward() {
    webkit_web_view_go_forward(view);
}

void WebKitPageControls::setHistoryObserver(std::weak_ptr<const std::function<void()>> observer) {
    historyObserver = std::move(observer);
}

void WebKitPageControls::reloadFromServer() {
    webkit_web_view_reload_bypass_cache(view);
}

void WebKitPageControls::print(GtkWindow* parent) {
    const auto operation =
        gobject::GObjectPointer<WebKitPrintOperation>::adopt(webkit_print_operation_new(view));
    webkit_print_operation_run_dialog(operation.get(), parent);
}

double WebKitPageControls::zoom() const {
    return webkit_web_view_get_zoom_level(view);
}

void WebKitPageControls::setZoom(double factor) {
    webkit_web_view_set_zoom_level(view, factor);
}

void WebKitPageControls::find(const std::string& text) {
    if (text.empty()) {
        endFind();
        found(0);
        return;
    }
    isFinding = true;
    webkit_find_controller_search(finder, text.c_str(), anyCase, G_MAXUINT);
}

void WebKitPageControls::findNext() {
    if (isFinding)
        webkit_find_controller_search_next(finder);
}

void WebKitPageControls::findPrevious() {
    if (isFinding)
        webkit_find_controller_search_previous(finder);
}

void WebKitPageControls::endFind() {
    if (std::exchange(isFinding, false))
        webkit_find_controller_search_finish(finder);
}

void WebKitPageControls::setFindObserver(
    std::weak_ptr<const std::function<void(unsigned places)>> observer) {
    findObserver = std::move(observer);
}

void WebKitPageControls::loadGivenUp() {
    isLoadGivenUp = true;
    tellLoadObserver();
}

void WebKitPageControls::tellLoadObserver() const {
    if (const auto told = loadObserver.lock())
        (*told)();
}

void WebKitPageControls::found(unsigned places) const {
    if (const auto told = findObserver.lock())
        (*told)(places);
}

} // namespace kelo::webkit
