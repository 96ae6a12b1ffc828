#include "linux/authorization/keyring/PatientCall.h"

namespace kelo::authorization {

PatientCall::PatientCall() : context(g_main_context_new()) {
    g_main_context_push_thread_default(context.get());
}

PatientCall::~PatientCall() {
    g_main_context_pop_thread_default(context.get());
}

void PatientCall::start(const std::function<void(GAsyncReadyCallback, gpointer)>& begin) const {
    auto data = std::make_unique<Outcome>(outcome);
    begin(finished, data.release());
}

GAsyncResult* PatientCall::wait(const std::stop_token& stop) const {
    // A wake-up is remembered, so one that comes before the iteration is not lost.
    const std::stop_callback wake(stop, [this] { g_main_context_wakeup(context.get()); });
    while (!*outcome && !stop.stop_requested())
        g_main_context_iteration(context.get(), TRUE);
    return outcome->get();
}

void PatientCall::finished(GObject*, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Outcome> outcome(static_cast<Outcome*>(data));
    **outcome = gobject::GObjectPointer<GAsyncResult>::share(result);
}

} // namespace kelo::authorization
