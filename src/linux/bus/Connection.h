#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelo::bus {

/// A connection to a message bus; null if there is none.
using Connection = gobject::GObjectPointer<GDBusConnection>;

/// One interface of an object that another program exports.
struct Object {
    /// The program's name on the bus.
    std::string owner;
    std::string path;
    std::string interface;
};

/// Addresses as the environment gives them; empty if there is no such bus. No bus is started.
std::string sessionAddress();
std::string systemAddress();

/// Opens a new connection to the bus at this address. Blocks until the bus has accepted it. Null on
/// failure. address: may be empty or wrong.
Connection openConnection(const std::string& address);

/// A new connection that several users share, opened when the first of them asks. The process's
/// main loop must be installed. Main thread only.
class SharedConnection : public std::enable_shared_from_this<SharedConnection> {
public:
    /// Receives null if the bus cannot be reached.
    using Opened = std::function<void(const Connection& connection)>;

    /// address: may be empty or wrong.
    explicit SharedConnection(std::string address);

    /// Calls back once, in a later turn of the main loop. An attempt that failed is not repeated.
    void whenOpen(Opened opened);

private:
    void open();
    void finish(Connection made);

    std::string address;
    bool isOpening = false;
    bool isFinished = false;
    Connection connection;
    std::vector<Opened> waiting;
};

} // namespace kelo::bus
