#include "linux/notification/ClickTokens.h"

#include "base/async/MainLoop.h"
#include "linux/bus/Signal.h"

#include <utility>

namespace kelo::notification {

namespace {

struct Arrived {
    std::uint32_t number = 0;
    std::string text;
};

std::optional<Arrived> read(GVariant* values) {
    if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(us)")))
        return std::nullopt;
    guint32 number = 0;
    const char* text = nullptr;
    g_variant_get(values, "(u&s)", &number, &text);
    return Arrived{number, text};
}

} // namespace

ClickTokens::ClickTokens(Handlers handlers) : handlers(std::move(handlers)) {}

ClickTokens::~ClickTokens() = default;

void ClickTokens::listen(GDBusConnection* bus) {
    const auto connection = bus::Connection::share(bus);
    const bus::Object server{"org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                             "org.freedesktop.Notifications"};
    signals.push_back(std::make_unique<bus::Signal>(
        connection, server, "ActivationToken", [this](const std::string&, GVariant* values) {
            if (const auto arrived = read(values))
                tokenSent(arrived->number, arrived->text);
        }));
    signals.push_back(std::make_unique<bus::Signal>(connection, server, "ActionInvoked",
                                                    [this](const std::string&, GVariant* values) {
                                                        if (const auto arrived = read(values))
                                                            clicked(arrived->number);
                                                    }));
}

void ClickTokens::tokenSent(std::uint32_t number, const std::string& token) {
    sent = Sent{number, token};
    handlers.keep(token);
}

// The toolkit hears of the same click, before or after this object. What is posted now runs after
// both.
void ClickTokens::clicked(std::uint32_t number) {
    if (!sent || sent->number != number)
        return;
    MainLoop::main().post(
        [this, used = std::exchange(sent, std::nullopt)->token, stillThere = std::weak_ptr(alive)] {
            if (!stillThere.expired())
                handlers.drop(used);
        });
}

} // namespace kelo::notification
