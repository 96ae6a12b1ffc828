#pragma once

#include "base/async/Continuation.h"
#include "base/async/Task.h"
#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <memory>
#include <utility>

namespace kelo::gobject {

/// Awaits one asynchronous operation of a GIO-style library. start(callback, data) must start the
/// operation with both arguments. The result is for the operation's finish function. Destroying the
/// task does not stop the operation: cancel its GCancellable for that. The callback then does
/// nothing. Main thread only.
template <typename Start>
Task<GObjectPointer<GAsyncResult>> asyncResult(Start start) {
    using Result = GObjectPointer<GAsyncResult>;
    using Continuation = CheckedContinuation<Result>;
    co_return co_await withCheckedContinuation<Result>([&start](Continuation waiting) {
        const GAsyncReadyCallback finished = [](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Continuation> waiter(static_cast<Continuation*>(data));
            waiter->resume(Result::share(result));
        };
        start(finished, std::make_unique<Continuation>(std::move(waiting)).release());
    });
}

} // namespace kelo::gobject
