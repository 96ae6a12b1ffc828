#pragma once

#include "linux/bus/Calls.h"
#include "linux/bus/NameWatch.h"
#include "linux/bus/Signal.h"

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelo::fuzz {

/// What other programs send, without a bus: FakeBus.cpp has definitions of its own for the classes
/// of linux/bus, and so their users run at full speed and in one thread. It also replaces two
/// functions of GLib.
struct FakeBus {
    struct Pending {
        const bus::Calls* caller = nullptr;
        bus::Object object;
        std::string method;
        bus::Calls::Answered answered;
    };
    struct Subscription {
        bus::Object object;
        std::string signal;
        std::shared_ptr<bus::Signal::Heard> heard;
    };
    using Observer = std::function<void(const bus::Object& object, const std::string& method,
                                        GVariant* parameters)>;

    /// The bus that the classes use; there is one at a time.
    static FakeBus& current();

    FakeBus();
    ~FakeBus();
    FakeBus(const FakeBus&) = delete;
    FakeBus& operator=(const FakeBus&) = delete;

    /// Answers the oldest call that waits. With null, with an error.
    void answer(gobject::GVariantPointer value);
    /// To everybody who listens.
    void send(const std::string& owner, const std::string& path, const std::string& signal,
              GVariant* values);
    void changeOwner(const std::string& owner);

    /// Told of each call, and of each message that needs no answer, which has no parameters.
    Observer called;
    std::deque<Pending> pending;
    std::map<guint, Subscription> subscriptions;
    std::weak_ptr<bus::NameWatch::Changed> nameChanged;
    /// Answers of calls that block, in their order; null is an error.
    std::deque<gobject::GVariantPointer> answers;
    bus::Connection connection;
    guint nextSubscription = 1;
};

} // namespace kelo::fuzz
