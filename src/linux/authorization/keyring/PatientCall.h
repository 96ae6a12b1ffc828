#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <stop_token>

namespace kelo::authorization {

/// Waits on a worker thread for an asynchronous call that may show a prompt to the user, and on a
/// stop leaves it where it is instead of cancelling it: libsecret cancels by dismissing the prompt,
/// and that brings down GNOME Keyring with everything unlocked in it
/// (https://gitlab.gnome.org/GNOME/gnome-keyring, gkd-secret-unlock.c: an assertion fails when a
/// prompt on show is dismissed). The prompt stays; what the user answers there still counts.
class PatientCall {
public:
    PatientCall();
    ~PatientCall();
    PatientCall(const PatientCall&) = delete;
    PatientCall& operator=(const PatientCall&) = delete;

    /// Starts the call with this callback and its data, once.
    void start(const std::function<void(GAsyncReadyCallback, gpointer)>& begin) const;
    /// The result to finish the call with, or null when stopped before.
    GAsyncResult* wait(const std::stop_token& stop) const;

private:
    struct ContextDeleter {
        void operator()(GMainContext* context) const { g_main_context_unref(context); }
    };
    /// Shared with the callback, which may come after this is gone, or never.
    using Outcome = std::shared_ptr<gobject::GObjectPointer<GAsyncResult>>;

    static void finished(GObject* source, GAsyncResult* result, gpointer data);

    std::unique_ptr<GMainContext, ContextDeleter> context;
    Outcome outcome = std::make_shared<gobject::GObjectPointer<GAsyncResult>>();
};

} // namespace kelo::authorization
