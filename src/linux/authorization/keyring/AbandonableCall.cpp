#include "linux/authorization/keyring/AbandonableCall.h"

namespace kelo::authorization {

AbandonableCall::AbandonableCall() : context(g_main_context_new()) {
    g_main_context_push_thread_default(context.get());
}

AbandonableCall::~AbandonableCall() {
    g_main_context_pop_thread_default(context.get());
}

void AbandonableCall::start(const std::function<void(GAsyncReadyCallback, gpointer)>& begin) const {
    auto data = std::make_unique<Outcome>(outcome);
    begin(finished, data.release());
}

GAsyncResult* AbandonableCall::wait(const std::stop_token& stop) const {
    // GLib remembers a wake-up that comes before the iteration.
    const std::stop_callback wake(stop, [this] { g_main_context_wakeup(context.get()); });
    while (!*outcome && !stop.stop_requested())
        g_main_context_iteration(context.get(), TRUE);
    return outcome->get();
}

void AbandonableCall::finished(GObject*, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Outcome> outcome(static_cast<Outcome*>(data));
    **outcome = gobject::GObjectPointer<GAsyncResult>::share(result);
}

} // namespace kelo::authorization
