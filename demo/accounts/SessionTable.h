#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kelo::demo {

/// One sign-in of an account.
struct Session {
    std::string identifier; ///< hash of the token: what is kept cannot be used to sign in
    std::string email;      ///< of the account
    std::string csrfToken;  ///< proves that a request comes from this session's own pages
    std::chrono::system_clock::time_point expires;
};

class SessionTable {
public:
    using Time = std::chrono::system_clock::time_point;

    static constexpr std::chrono::hours lifetime{30 * 24};
    /// Most sessions of one account; beyond it, the session that expires first is closed.
    static constexpr std::size_t capacity = 64;

    /// Opens a session and returns its token, the secret that the cookie carries.
    std::string open(std::string_view email, Time now);

    /// The session of a token; null if there is none or it has expired. Valid until the table
    /// changes.
    const Session* find(std::string_view token, Time now) const;

    /// Does nothing if there is no such session.
    void close(const std::string& identifier);

    /// Adds a session from an earlier run.
    void restore(Session session);

    const std::map<std::string, Session>& all() const { return sessions; }

private:
    void makeRoom(std::string_view email, Time now);

    std::map<std::string, Session> sessions; ///< by identifier
};

} // namespace kelo::demo
