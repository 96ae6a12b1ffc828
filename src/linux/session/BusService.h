#pragma once

#include <giomm/dbusconnection.h>
#include <giomm/dbuswatchname.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelo::session {

/// A connection to a bus that several services share. Main thread only.
class Bus : public std::enable_shared_from_this<Bus> {
public:
    using Connection = Glib::RefPtr<Gio::DBus::Connection>;
    using Ready = std::function<void(const Connection& connection)>;

    /// address: may be empty or wrong.
    explicit Bus(std::string address) : address(std::move(address)) {}

    /// Connects when first called. Calls back in a later turn of the main loop, with null if the
    /// bus cannot be reached.
    void whenReady(Ready ready);

private:
    void connect();
    void finish(const Connection& made);

    std::string address;
    bool isConnecting = false;
    bool isFinished = false;
    Connection connection;
    std::vector<Ready> waiting;
};

/// One service on a bus, followed as it comes and goes. Nothing blocks, and no service is started.
/// After the destructor, and after the service has gone, no callback of its calls and signals runs
/// any more. Main thread only.
class BusService {
public:
    using Values = Glib::VariantContainerBase;
    using Answered = std::function<void(const Values& values)>;
    using Failed = std::function<void()>;

    /// came: the service has an owner. gone: it has none, or the bus cannot be reached. One of them
    /// is called in a later turn of the main loop, and then after each change.
    BusService(Bus& bus, std::string name, std::function<void()> came, std::function<void()> gone);
    ~BusService();
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    /// Calls a method while the service has an owner.
    void call(const std::string& path, const std::string& interface, const std::string& method,
              const Values& arguments, Answered answered, Failed failed) const;
    /// Hears one signal from the present owner of the service alone. path: of the object that sends
    /// it; empty for every object.
    void hear(const std::string& path, const std::string& interface, const std::string& signal,
              Answered heard);

private:
    struct Life;

    void connected(const Bus::Connection& made);
    void ownerChanged(const Glib::ustring& newOwner);
    void stopHearing();

    std::string name;
    std::function<void()> came;
    std::function<void()> gone;
    Bus::Connection connection;
    Glib::ustring owner;
    guint watch = 0;
    std::vector<guint> subscriptions;
    /// Lives as long as this object, and as long as the owner does. Callbacks hold them weakly.
    std::shared_ptr<Life> ownLife;
    std::shared_ptr<Life> ownersLife;
};

/// Addresses as the environment gives them; empty if there is no such bus. No bus is started.
std::string systemBusAddress();
std::string sessionBusAddress();

} // namespace kelo::session
