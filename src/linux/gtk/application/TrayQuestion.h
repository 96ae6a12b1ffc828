#pragma once

#include "linux/bus/Calls.h"

#include <functional>
#include <string>

namespace kelo::gtk {

/// Asks the programs on a session bus whether a tray shows items. Starts none of them. Main thread
/// only.
class TrayQuestion {
public:
    using Answered = std::function<void(bool hasTray)>;

    /// answered: called once, in a later turn of the main loop; not if this was destroyed before.
    /// May destroy this.
    TrayQuestion(bus::Connection bus, Answered answered);

private:
    /// Receives null if the call failed.
    using Replied = std::function<void(GVariant* values)>;
    using OwnerFound = std::function<void(const std::string& owner)>;

    void call(const bus::Object& object, const char* method, GVariant* parameters, Replied replied);
    void lookForHost();
    void findOwner(const std::string& name, OwnerFound found);
    void compareWith(const std::string& daemon);
    void answer(bool hasTray);

    bus::Connection connection;
    Answered answered;
    bus::Calls calls;
};

} // namespace kelo::gtk
