#include "linux/webkit/dialogs/ScriptDialogs.h"

#include <chrono>
#include <utility>

namespace kelo::webkit {

namespace {

/// A dialog that comes so soon after the answer to the one before may be one of an endless row.
constexpr std::chrono::seconds shortTime{10};
/// How long the program waits for a page that may hang.
constexpr std::chrono::seconds patience{4};

window::PageQuestionKind kindOf(WebKitScriptDialog* dialog) {
    switch (webkit_script_dialog_get_dialog_type(dialog)) {
    case WEBKIT_SCRIPT_DIALOG_ALERT:
        break;
    case WEBKIT_SCRIPT_DIALOG_CONFIRM:
        return window::PageQuestionKind::confirm;
    case WEBKIT_SCRIPT_DIALOG_PROMPT:
        return window::PageQuestionKind::prompt;
    case WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM:
        return window::PageQuestionKind::beforeUnload;
    }
    return window::PageQuestionKind::alert;
}

bool isBeforeUnload(WebKitScriptDialog* dialog) {
    return kindOf(dialog) == window::PageQuestionKind::beforeUnload;
}

std::string text(const char* given) {
    return given ? given : "";
}

bool isInSight(WebKitWebView* view) {
    return gtk_widget_get_mapped(GTK_WIDGET(view));
}

// The engine loses an answer that it is given while it still asks.
void closeLater(WebKitScriptDialog* dialog) {
    const std::shared_ptr<WebKitScriptDialog> kept(webkit_script_dialog_ref(dialog),
                                                   EngineDeleter());
    MainLoop::main().post([kept] { webkit_script_dialog_close(kept.get()); });
}

GtkWindow* windowOf(WebKitWebView* view) {
    return isInSight(view) ? GTK_WINDOW(gtk_widget_get_root(GTK_WIDGET(view))) : nullptr;
}

} // namespace

ScriptDialogs::ScriptDialogs(WebKitWebView* view, const ShownPage& shown, DialogServices given,
                             Handlers handlers, SteadyNow now)
    : view(view),
      shown(shown),
      services(std::move(given)),
      handlers(std::move(handlers)),
      now(std::move(now)),
      // The engine lets a page ask before it is left although nobody has done anything in it.
      input(GTK_WIDGET(view), [this] { isUsed = true; }) {
    connectAll();
    if (services.pages)
        services.pages->add(*this);
}

ScriptDialogs::~ScriptDialogs() {
    connections.clear();
    stopLimit();
    dialog = nullptr;
    if (const auto unanswered = std::exchange(open, nullptr))
        webkit_script_dialog_close(unanswered.get());
    if (services.pages)
        services.pages->remove(*this);
}

void ScriptDialogs::connectAll() {
    using Self = ScriptDialogs*;
    const auto connect = [this](const char* signal, auto* handler) {
        connections.push_back(gobject::connectSignal(view, signal, handler, this));
    };
    connect(
        "script-dialog", +[](WebKitWebView*, WebKitScriptDialog* given, Self self) -> gboolean {
            self->asked(given);
            return TRUE;
        });
    connect(
        "load-changed",
        +[](WebKitWebView*, WebKitLoadEvent event, Self self) { self->loadChanged(event); });
    // Of a load that led to another place in the shown page, the engine tells nothing else.
    connect(
        "notify::is-loading", +[](WebKitWebView* view, GParamSpec*, Self self) {
            if (!webkit_web_view_is_loading(view))
                self->isBeingLeft = self->isLeftUnasked = false;
        });
    connect(
        "web-process-terminated", +[](WebKitWebView*, WebKitWebProcessTerminationReason,
                                      Self self) { self->processEnded(); });
    connect(
        "close", +[](WebKitWebView*, Self self) { self->pageClosed(); });
    connect(
        "unmap", +[](WebKitWebView*, Self self) { self->leaveTheScreen(); });
}

void ScriptDialogs::asked(WebKitScriptDialog* given) {
    const bool unloads = isBeforeUnload(given);
    if (!isRefused(unloads)) {
        show(given);
        return;
    }
    const bool leaves = unloads && (isLeftUnasked || !isUsed || !services.dialogs);
    if (unloads)
        webkit_script_dialog_confirm_set_confirmed(given, leaves);
    closeLater(given);
    if (unloads && !leaves)
        stay();
}

bool ScriptDialogs::isRefused(bool isBeforeUnload) const {
    if (!services.dialogs)
        return true;
    if (isBeforeUnload)
        return isLeftUnasked || !isUsed || (!isInSight(view) && !decided);
    return isSilenced || isBeingLeft || decided || !isInSight(view);
}

void ScriptDialogs::show(WebKitScriptDialog* given) {
    open.reset(webkit_script_dialog_ref(given));
    stopLimit();
    window::PageQuestion question;
    question.kind = kindOf(given);
    question.host = shown.host();
    question.message = text(webkit_script_dialog_get_message(given));
    if (question.kind == window::PageQuestionKind::prompt)
        question.defaultText = text(webkit_script_dialog_prompt_get_default_text(given));
    question.mayBeSilenced = question.kind != window::PageQuestionKind::beforeUnload &&
                             lastAnswer && now() < *lastAnswer + shortTime;
    question.isUrgent = decided != nullptr;
    handlers.opened();
    dialog = services.dialogs->show(question, windowOf(view),
                                    [this](const window::PageAnswer& answer) { answered(answer); });
}

void ScriptDialogs::answered(const window::PageAnswer& answer) {
    // It is still inside its own event handling.
    MainLoop::main().post([closed = std::exchange(dialog, nullptr)]() mutable { closed.reset(); });
    const auto native = std::exchange(open, nullptr);
    if (!native)
        return;
    const auto kind = kindOf(native.get());
    lastAnswer = now();
    isSilenced = isSilenced || answer.silencesPage;
    if (kind == window::PageQuestionKind::confirm || kind == window::PageQuestionKind::beforeUnload)
        webkit_script_dialog_confirm_set_confirmed(native.get(), answer.isConfirmed);
    else if (kind == window::PageQuestionKind::prompt && answer.isConfirmed)
        webkit_script_dialog_prompt_set_text(native.get(), answer.text.c_str());
    webkit_script_dialog_close(native.get());
    handlers.answered();
    if (kind != window::PageQuestionKind::beforeUnload)
        return;
    if (!answer.isConfirmed)
        stay();
    else if (decided)
        startLimit();
}

void ScriptDialogs::cancel() {
    dialog = nullptr;
    const auto native = std::exchange(open, nullptr);
    if (!native)
        return;
    const bool unloads = isBeforeUnload(native.get());
    webkit_script_dialog_close(native.get());
    handlers.answered();
    if (unloads)
        stay();
}

void ScriptDialogs::stay() {
    isBeingLeft = false;
    isLeftUnasked = false;
    handlers.stayed();
    decide(false);
}

void ScriptDialogs::leaveTheScreen() {
    if (!decided)
        cancel();
}

void ScriptDialogs::loadRequested() {
    cancel();
    isBeingLeft = true;
    isLeftUnasked = !isInSight(view);
}

void ScriptDialogs::loadChanged(WebKitLoadEvent event) {
    if (event != WEBKIT_LOAD_COMMITTED)
        return;
    isBeingLeft = false;
    isLeftUnasked = false;
    isSilenced = false;
    isUsed = false;
}

void ScriptDialogs::processEnded() {
    dialog = nullptr;
    if (const auto native = std::exchange(open, nullptr))
        webkit_script_dialog_close(native.get());
    isSilenced = false;
    decide(true);
}

void ScriptDialogs::pageClosed() {
    if (decided)
        decide(true);
    else if (const auto tell = handlers.closed)
        tell();
}

void ScriptDialogs::tryToLeave(std::function<void(bool leaves)> given) {
    if (decided)
        return given(false);
    cancel();
    decided = std::move(given);
    if (!webkit_web_view_get_is_web_process_responsive(view))
        return decide(true);
    startLimit();
    webkit_web_view_try_close(view);
}

// Last of all, because this may be destroyed by it.
void ScriptDialogs::decide(bool leaves) {
    stopLimit();
    if (const auto tell = std::exchange(decided, nullptr))
        tell(leaves);
}

void ScriptDialogs::startLimit() {
    stopLimit();
    limit = MainLoop::main().scheduleTimer(patience, [this] {
        g_warning("The page does not say whether it can be left. It is left");
        decide(true);
    });
}

void ScriptDialogs::stopLimit() {
    if (const auto pending = std::exchange(limit, nullptr))
        pending->invalidate();
}

} // namespace kelo::webkit
