#pragma once

#include "linux/glib/GObjectPointer.h"
#include "platform/MainLoop.h"

#include <gio/gio.h>

#include <chrono>
#include <memory>

namespace kelo::desktop {

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
    std::shared_ptr<platform::Timer> begin() const;

    std::chrono::seconds limit;
    GObjectPointer<GCancellable> cancellable_;
    std::shared_ptr<bool> passed_;
    std::shared_ptr<platform::Timer> timer;
};

} // namespace kelo::desktop
