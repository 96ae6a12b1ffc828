#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::bus {
class Signal;
}

namespace kelo::notification {

/// The activation tokens that the desktop's notification server sends with clicks: a token just
/// before each click (org.freedesktop.Notifications 1.2). The toolkit reads the click and ignores
/// the token. Some servers send both to every program, so a token is kept only while its click is
/// handled.
///
/// The process's main loop must be installed. Main thread only.
class ClickTokens {
public:
    struct Handlers {
        /// Called before the click is handled.
        std::function<void(const std::string& token)> keep;
        /// Called after the click was handled, by this program or by another.
        std::function<void(const std::string& token)> drop;
    };

    explicit ClickTokens(Handlers handlers);
    ~ClickTokens();
    ClickTokens(const ClickTokens&) = delete;
    ClickTokens& operator=(const ClickTokens&) = delete;

    /// Listens to the notification server on this bus, whichever it is at the time. Keeps the
    /// connection.
    void listen(GDBusConnection* bus);

    /// What the server says of the notification with this number.
    void tokenSent(std::uint32_t number, const std::string& token);
    void clicked(std::uint32_t number);

private:
    struct Sent {
        std::uint32_t number = 0;
        std::string token;
    };

    Handlers handlers;
    std::optional<Sent> sent;
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
    std::vector<std::unique_ptr<bus::Signal>> signals;
};

} // namespace kelo::notification
