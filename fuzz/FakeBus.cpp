#include "FakeBus.h"

#include "FuzzInput.h"

#include <utility>

namespace kelo::fuzz {

namespace {

FakeBus* theBus = nullptr;

/// Made and never opened: its users only hand it on.
bus::Connection closedConnection() {
    static const auto connection = bus::Connection::adopt(
        static_cast<GDBusConnection*>(g_object_new(G_TYPE_DBUS_CONNECTION, nullptr)));
    return connection;
}

} // namespace

FakeBus& FakeBus::current() {
    return *theBus;
}

FakeBus::FakeBus() : connection(closedConnection()) {
    require(!std::exchange(theBus, this));
}

FakeBus::~FakeBus() {
    theBus = nullptr;
}

void FakeBus::answer(gobject::GVariantPointer value) {
    if (pending.empty())
        return;
    const Pending oldest = std::move(pending.front());
    pending.pop_front();
    gobject::GErrorPointer failure(
        value ? nullptr : g_error_new_literal(G_IO_ERROR, G_IO_ERROR_FAILED, "refused"));
    oldest.answered(std::move(value), std::move(failure));
}

void FakeBus::send(const std::string& owner, const std::string& path, const std::string& signal,
                   GVariant* values) {
    std::vector<guint> listeners;
    for (const auto& [identifier, subscription] : subscriptions)
        listeners.push_back(identifier);
    for (const guint identifier : listeners) {
        // The one before may have ended this one.
        const auto found = subscriptions.find(identifier);
        if (found == subscriptions.end() || found->second.signal != signal ||
            found->second.object.owner != owner ||
            (!found->second.object.path.empty() && found->second.object.path != path))
            continue;
        const auto heard = found->second.heard;
        (*heard)(path, values);
    }
}

void FakeBus::changeOwner(const std::string& owner) {
    if (const auto changed = nameChanged.lock())
        (*changed)(connection, owner);
}

} // namespace kelo::fuzz

namespace kelo::bus {

using fuzz::FakeBus;

std::string sessionAddress() {
    return "fake:";
}

Connection openConnection(const std::string&) {
    return FakeBus::current().connection;
}

Calls::~Calls() {
    std::erase_if(FakeBus::current().pending,
                  [this](const FakeBus::Pending& call) { return call.caller == this; });
}

void Calls::call(const Connection&, const Object& object, const char* method, GVariant* parameters,
                 Answered answered, Patience) const {
    const gobject::GVariantPointer owned(parameters ? g_variant_ref_sink(parameters) : nullptr);
    FakeBus& bus = FakeBus::current();
    bus.pending.push_back({this, object, method, std::move(answered)});
    bus.called(object, method, owned.get());
}

void tell(const Connection&, const Object& object, const char* method) {
    FakeBus::current().called(object, method, nullptr);
}

Signal::Signal(Connection bus, const Object& object, const char* signal, Heard heard)
    : connection(std::move(bus)), subscription(FakeBus::current().nextSubscription++) {
    FakeBus::current().subscriptions[subscription] = {object, signal,
                                                      std::make_shared<Heard>(std::move(heard))};
}

Signal::~Signal() {
    FakeBus::current().subscriptions.erase(subscription);
}

struct NameWatch::State {
    std::shared_ptr<Changed> changed;
};

NameWatch::NameWatch(SharedConnection&, std::string, Starting, Changed changed)
    : state(std::make_shared<State>(State{std::make_shared<Changed>(std::move(changed))})) {
    FakeBus::current().nameChanged = state->changed;
}

NameWatch::~NameWatch() = default;

SharedConnection::SharedConnection(std::string address) : address(std::move(address)) {}

} // namespace kelo::bus

extern "C" const char* g_dbus_connection_get_unique_name(GDBusConnection*) {
    return ":1.1";
}

extern "C" GVariant* g_dbus_connection_call_sync(GDBusConnection*, const char* owner, const char*,
                                                 const char*, const char*, GVariant* parameters,
                                                 const GVariantType* expected, GDBusCallFlags, int,
                                                 GCancellable*, GError** error) {
    auto& answers = kelo::fuzz::FakeBus::current().answers;
    if (parameters)
        g_variant_unref(g_variant_ref_sink(parameters));
    kelo::fuzz::require(owner != nullptr);
    kelo::gobject::GVariantPointer answer;
    if (!answers.empty()) {
        answer = std::move(answers.front());
        answers.pop_front();
    }
    if (!answer)
        g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT, "late");
    else if (expected && !g_variant_is_of_type(answer.get(), expected))
        g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_INVALID_ARGUMENT, "another type");
    else
        return answer.release();
    return nullptr;
}
