#include "linux/http/Deadline.h"

namespace kelo::http {

Deadline::Deadline(std::chrono::seconds limit)
    : limit(limit),
      cancellable_(gobject::GObjectPointer<GCancellable>::adopt(g_cancellable_new())),
      passed_(std::make_shared<bool>(false)),
      timer(begin()) {}

Deadline::~Deadline() {
    timer->invalidate();
    g_cancellable_cancel(cancellable_.get());
}

void Deadline::restart() {
    timer->invalidate();
    timer = begin();
}

std::shared_ptr<Timer> Deadline::begin() const {
    return MainLoop::main().scheduleTimer(limit, [cancellable = cancellable_, passed = passed_] {
        *passed = true;
        g_cancellable_cancel(cancellable.get());
    });
}

} // namespace kelo::http
