#pragma once

#include "linux/glib/GObjectPointer.h"
#include "platform/Continuation.h"
#include "platform/Task.h"

#include <gio/gio.h>

#include <memory>
#include <utility>

namespace kelo::desktop {

/// Awaits one asynchronous operation of a GIO-style library. start(callback, data) must begin it
/// and hand both through; the flow goes on with the result, to give to the operation's finish
/// function. Dropping the flow does not stop the operation (cancel its GCancellable for that), it
/// only makes nobody wait for it any more. Main thread only.
template <typename Start>
platform::Task<GObjectPointer<GAsyncResult>> asyncResult(Start start) {
    using Result = GObjectPointer<GAsyncResult>;
    using Continuation = platform::CheckedContinuation<Result>;
    co_return co_await platform::withCheckedContinuation<Result>([&start](Continuation waiting) {
        const GAsyncReadyCallback finished = [](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Continuation> waiter(static_cast<Continuation*>(data));
            waiter->resume(Result::share(result));
        };
        start(finished, std::make_unique<Continuation>(std::move(waiting)).release());
    });
}

} // namespace kelo::desktop
