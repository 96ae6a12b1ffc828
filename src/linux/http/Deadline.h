#pragma once

#include "base/async/MainLoop.h"
#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <chrono>
#include <memory>

namespace kelo::http {

/// A time limit for a request. Cancels its GCancellable when the time has passed, and when it is
/// destroyed. Main thread only.
class Deadline {
public:
    explicit Deadline(std::chrono::seconds limit);
    ~Deadline();
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    /// Starts the time again. Has no effect once the time has passed.
    void restart();

    GCancellable* cancellable() const { return cancellable_.get(); }
    bool passed() const { return *passed_; }

private:
    std::shared_ptr<Timer> begin() const;

    std::chrono::seconds limit;
    gobject::GObjectPointer<GCancellable> cancellable_;
    std::shared_ptr<bool> passed_;
    std::shared_ptr<Timer> timer;
};

} // namespace kelo::http
