#pragma once

#include <functional>
#include <memory>
#include <string>

namespace kelo::session {

/// The seat that belongs to everything of which nobody says otherwise.
inline constexpr const char* firstSeat = "seat0";

/// The login session of this program, as far as input devices are concerned. Main thread only.
class SeatSession {
public:
    /// Called after each change of an answer below.
    using Changed = std::function<void()>;

    virtual ~SeatSession() = default;

    /// False until the login manager has answered. True if there is none.
    virtual bool isCertain() const = 0;
    /// Whether its seat shows this session, and not another user's. True if nobody knows.
    virtual bool isActive() const = 0;
    /// The login manager's name of its seat. Empty if it has none, as a session that came over the
    /// network. firstSeat if nobody knows.
    virtual std::string seat() const = 0;
};

/// Follows the session with the login manager on the environment's system bus. Waits for nobody:
/// changed is called in later turns of the main loop.
std::unique_ptr<SeatSession> followSeatSession(SeatSession::Changed changed);

} // namespace kelo::session
