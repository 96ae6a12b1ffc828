#include "linux/http/Deadline.h"

namespace kelo::desktop {

Deadline::Deadline(std::chrono::seconds limit)
    : cancellable_(GObjectPointer<GCancellable>::adopt(g_cancellable_new())),
      passed_(std::make_shared<bool>(false)),
      timer(platform::MainLoop::main().scheduleTimer(
          limit, [cancellable = cancellable_, passed = passed_] {
              *passed = true;
              g_cancellable_cancel(cancellable.get());
          })) {}

Deadline::~Deadline() {
    timer->invalidate();
    g_cancellable_cancel(cancellable_.get());
}

} // namespace kelo::desktop
