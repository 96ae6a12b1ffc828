#include "linux/webkit/WebProcess.h"

#include <chrono>
#include <utility>

namespace kelo::webkit {

namespace {

constexpr std::chrono::seconds patience{4};
constexpr std::chrono::seconds repeatedAfter{1};

// Without a graphics card, the engine paints nothing of a process that replaces another one until
// the view comes into sight again.
void comeIntoSight(GtkWidget* view) {
    if (!gtk_widget_get_mapped(view))
        return;
    const bool hadFocus = gtk_widget_has_focus(view);
    gtk_widget_set_visible(view, FALSE);
    gtk_widget_set_visible(view, TRUE);
    if (hadFocus)
        gtk_widget_grab_focus(view);
}

} // namespace

WebProcess::WebProcess(WebKitWebView* view, Handlers given)
    : view(view),
      handlers(std::move(given)),
      self(std::make_shared<WebProcess*>(this)),
      responsivenessConnection(gobject::connectSignal(
          view, "notify::is-web-process-responsive",
          +[](WebKitWebView*, GParamSpec*, WebProcess* self) {
              self->handlers.responsivenessChanged();
          },
          this)),
      terminationConnection(gobject::connectSignal(
          view, "web-process-terminated",
          +[](WebKitWebView*, WebKitWebProcessTerminationReason reason, WebProcess* self) {
              self->terminated(reason);
          },
          this)),
      // The engine asks by itself, but not for a click that follows a movement of the mouse: it
      // keeps the click back until the page has taken the movement.
      input(GTK_WIDGET(view), [this] { expectAnswer(); }) {}

WebProcess::~WebProcess() {
    stopTimers();
}

void WebProcess::expectAnswer() {
    ask();
    if (timer || isOverdue || showsDialog)
        return;
    timer = MainLoop::main().scheduleTimer(patience, [this] {
        timer = nullptr;
        isOverdue = true;
        handlers.responsivenessChanged();
    });
}

// Any question that only the process can answer. Unlike a script, this one does not count as a
// gesture of the user.
void WebProcess::ask() {
    if (std::exchange(isAsked, true))
        return;
    using Asker = std::weak_ptr<WebProcess*>;
    const GAsyncReadyCallback ready = [](GObject* view, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<Asker> asker(static_cast<Asker*>(data));
        webkit_web_view_can_execute_editing_command_finish(WEBKIT_WEB_VIEW(view), result, nullptr);
        if (const auto process = asker->lock()) {
            (*process)->answered();
            (*process)->askAgain();
        }
    };
    webkit_web_view_can_execute_editing_command(view, WEBKIT_EDITING_COMMAND_COPY, nullptr, ready,
                                                std::make_unique<Asker>(self).release());
}

void WebProcess::answered() {
    isAsked = false;
    showsDialog = false;
    stopTimers();
    if (std::exchange(isOverdue, false))
        handlers.responsivenessChanged();
}

// A process may begin to hang after it has answered, and before what is expected of it is there.
void WebProcess::askAgain() {
    if (handlers.isAwaited())
        repetition = MainLoop::main().scheduleTimer(repeatedAfter, [this] {
            repetition = nullptr;
            if (handlers.isAwaited())
                expectAnswer();
        });
}

// A script that waits for the user answers nothing. The answer tells that it goes on.
void WebProcess::dialogOpened() {
    showsDialog = true;
    stopTimers();
    ask();
}

void WebProcess::dialogAnswered() {
    showsDialog = false;
}

void WebProcess::stopTimers() {
    for (auto* const each : {&timer, &repetition})
        if (const auto pending = std::exchange(*each, nullptr))
            pending->invalidate();
}

bool WebProcess::answers() const {
    return !isOverdue && webkit_web_view_get_is_web_process_responsive(view);
}

void WebProcess::endIfItHangs() {
    if (!answers())
        webkit_web_view_terminate_web_process(view);
}

void WebProcess::pageChanged() {
    if (std::exchange(isNew, false))
        comeIntoSight(GTK_WIDGET(view));
}

void WebProcess::terminated(WebKitWebProcessTerminationReason reason) {
    isNew = true;
    handlers.ended();
    answered();
    if (reason != WEBKIT_WEB_PROCESS_TERMINATED_BY_API)
        handlers.failed(reason);
}

} // namespace kelo::webkit
