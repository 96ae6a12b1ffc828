#pragma once

#include "demo/http/ExchangeTimes.h"
#include "demo/http/Http.h"
#include "demo/tls/Authority.h"
#include "linux/gobject/GObjectPointer.h"

#include <libsoup/soup.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

namespace kelo::demo {

/// An HTTPS server on the loopback addresses. It answers on the thread's main context.
class HttpServer {
public:
    using Handler = std::function<Reply(const Request&)>;

    /// Larger bodies are refused with status 413 and not buffered.
    static constexpr std::size_t largestBody = 64 * 1024;

    /// Listens at once. Port 0 means any free port. Throws ServiceError.
    HttpServer(const AuthorityFiles& files, std::uint16_t port);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    std::uint16_t port() const { return listeningPort; }

    /// Sets the handler. Without one, every response has status 503.
    void setHandler(Handler newHandler) { handler = std::move(newHandler); }

    /// Writes down from now on when requests came and answers began.
    void keepTimes(ExchangeTimes kept) { times = std::move(kept); }

private:
    static void onHeaders(SoupServer* server, SoupServerMessage* message, const char* path,
                          GHashTable* query, gpointer self);
    static void onRequest(SoupServer* server, SoupServerMessage* message, const char* path,
                          GHashTable* query, gpointer self);
    void answer(SoupServerMessage* message, const char* path) const;

    gobject::GObjectPointer<SoupServer> server;
    Handler handler;
    std::optional<ExchangeTimes> times;
    std::uint16_t listeningPort = 0;
};

} // namespace kelo::demo
