#pragma once

#include "base/async/MainLoop.h"
#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <chrono>
#include <memory>

namespace kelo::http {

/// The time a whole request may take, and its end by any other way: cancels what runs under it when
/// the time is over, and when the object goes. Main thread only.
class Deadline {
public:
    explicit Deadline(std::chrono::seconds limit);
    ~Deadline();
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    /// The time begins anew, unless it is over.
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
