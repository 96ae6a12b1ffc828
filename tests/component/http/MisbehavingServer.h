#pragma once

#include "base/Url.h"
#include "component/http/TestAuthority.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace kelo::test {

/// A request as it arrived.
struct WireRequest {
    std::string method;
    std::string target;
    /// In the order and spelling in which they arrived.
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    /// The value of the first header with this name, in any case; empty if there is none.
    std::optional<std::string> header(std::string_view name) const;
    /// Names in lower case, sorted.
    std::vector<std::string> headerNames() const;
};

/// The server's end of one connection, with TLS already set up if there is any. Every call blocks
/// its own thread.
class ServerConnection {
public:
    virtual ~ServerConnection() = default;
    /// The next request; empty if the peer has closed the connection.
    virtual std::optional<WireRequest> read() = 0;
    /// False if the peer has closed the connection.
    virtual bool write(std::string_view bytes) = 0;
    /// Closes TLS and the connection in order.
    virtual void close() = 0;
    /// Closes the connection without TLS's close_notify.
    virtual void breakOff() = 0;
    /// Waits until the peer ends the connection.
    virtual void waitForPeer() = 0;
    /// Waits until the peer ends the connection or sends something, but no longer than this; false
    /// when neither came.
    virtual bool peerStirs(std::chrono::milliseconds limit) = 0;
    /// Passes bytes both ways between the peer and this port until one of them ends the connection.
    /// Without TLS only.
    virtual void relayTo(std::uint16_t port) = 0;
};

/// An HTTPS server, or a proxy, on a free loopback port. The behaviour runs once for each
/// connection, in a thread of its own.
class MisbehavingServer {
public:
    using Behaviour = std::function<void(ServerConnection&)>;
    using Answer = std::function<std::string(const WireRequest&)>;

    MisbehavingServer(const Identity& identity, Behaviour behaviour);
    /// Without TLS: a proxy.
    explicit MisbehavingServer(Behaviour behaviour);
    ~MisbehavingServer();

    /// Answers every request of a connection, one after another.
    static Behaviour answering(Answer answer);
    /// Answers one request with these bytes, and closes in order.
    static Behaviour saying(std::string bytes);

    /// https://localhost:port and the path.
    Url url(std::string_view path = "") const;
    std::string origin() const;
    std::uint16_t port() const { return port_; }

    /// The protocols that the latest peer offered by ALPN. No choice is made among them.
    std::vector<std::string> offeredProtocols() const;
    /// All requests read so far, over all connections.
    std::vector<WireRequest> requests() const;
    /// How many connections were accepted.
    int connectionCount() const;
    /// How many connections have ended.
    int endedCount() const;

private:
    class Connection;
    struct Tls;

    void listenOnLoopback();
    void acceptAll();
    void serve(int socket);
    void record(const WireRequest& request);
    void recordOffer(std::vector<std::string> protocols);

    Behaviour behaviour;
    std::unique_ptr<Tls> tls;
    int listener = -1;
    std::uint16_t port_ = 0;

    mutable std::mutex mutex;
    std::vector<WireRequest> seen;
    std::vector<std::string> offered;
    std::vector<int> open;
    int accepted = 0;
    int ended = 0;
    bool stopping = false;
    std::vector<std::thread> workers;
    std::thread acceptor;
};

/// A complete HTTP/1.1 reply with a Content-Length; extraHeaders are whole lines, each with its
/// end.
std::string httpReply(std::string_view body, std::string_view extraHeaders = "",
                      std::string_view status = "200 OK");

} // namespace kelo::test
