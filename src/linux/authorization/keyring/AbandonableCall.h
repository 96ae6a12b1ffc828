#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <stop_token>

namespace kelo::authorization {

/// An asynchronous call of libsecret that may prompt the user. A worker thread waits for it. A stop
/// abandons the call and does not cancel it, because libsecret cancels by dismissing the prompt.
/// That crashes GNOME Keyring, and everything unlocked in it is locked again
/// (https://gitlab.gnome.org/GNOME/gnome-keyring, gkd-secret-unlock.c: an assertion fails if a
/// visible prompt is dismissed). The prompt stays open, and the user's answer still takes effect.
class AbandonableCall {
public:
    AbandonableCall();
    ~AbandonableCall();
    AbandonableCall(const AbandonableCall&) = delete;
    AbandonableCall& operator=(const AbandonableCall&) = delete;

    /// Calls begin with the callback and its data, which it must pass to the library. Once.
    void start(const std::function<void(GAsyncReadyCallback, gpointer)>& begin) const;
    /// Waits for the result, which finishes the call. Null if stopped before. Owned by this object.
    GAsyncResult* wait(const std::stop_token& stop) const;

private:
    struct ContextDeleter {
        void operator()(GMainContext* context) const { g_main_context_unref(context); }
    };
    /// Shared with the callback, which may run after this is destroyed, or never.
    using Outcome = std::shared_ptr<gobject::GObjectPointer<GAsyncResult>>;

    static void finished(GObject* source, GAsyncResult* result, gpointer data);

    std::unique_ptr<GMainContext, ContextDeleter> context;
    Outcome outcome = std::make_shared<gobject::GObjectPointer<GAsyncResult>>();
};

} // namespace kelo::authorization
