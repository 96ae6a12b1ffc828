#include "component/http/MisbehavingServer.h"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace kelo::test {

namespace {

struct SslDeleter {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
    void operator()(SSL* ssl) const { SSL_free(ssl); }
    void operator()(BIO* bio) const { BIO_free_all(bio); }
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
template <typename T>
using SslPointer = std::unique_ptr<T, SslDeleter>;

SslPointer<BIO> reading(const std::string& text) {
    return SslPointer<BIO>(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

bool sendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(socket, bytes.data(), bytes.size(), 0);
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool relayOnce(int from, int to) {
    char bytes[16 * 1024];
    const ssize_t count = recv(from, bytes, sizeof bytes, 0);
    return count > 0 && sendAll(to, {bytes, static_cast<std::size_t>(count)});
}

WireRequest parsedHead(const std::string& head) {
    WireRequest request;
    std::size_t at = head.find("\r\n");
    const std::string line = head.substr(0, at);
    const auto first = line.find(' ');
    const auto second = line.find(' ', first + 1);
    request.method = line.substr(0, first);
    request.target = line.substr(first + 1, second - first - 1);
    for (at += 2; at < head.size();) {
        const auto end = head.find("\r\n", at);
        const auto colon = head.find(':', at);
        std::string value = head.substr(colon + 1, end - colon - 1);
        value.erase(0, value.find_first_not_of(' '));
        request.headers.emplace_back(head.substr(at, colon - at), value);
        at = end + 2;
    }
    return request;
}

} // namespace

std::optional<std::string> WireRequest::header(std::string_view name) const {
    for (const auto& [candidate, value] : headers)
        if (lowered(candidate) == lowered(name))
            return value;
    return std::nullopt;
}

std::vector<std::string> WireRequest::headerNames() const {
    std::vector<std::string> names;
    for (const auto& [name, value] : headers)
        names.push_back(lowered(name));
    std::sort(names.begin(), names.end());
    return names;
}

struct MisbehavingServer::Tls {
    SslPointer<SSL_CTX> context{SSL_CTX_new(TLS_server_method())};

    explicit Tls(const Identity& identity) {
        const SslPointer<X509> certificate(
            PEM_read_bio_X509(reading(identity.certificate).get(), nullptr, nullptr, nullptr));
        const SslPointer<EVP_PKEY> key(
            PEM_read_bio_PrivateKey(reading(identity.key).get(), nullptr, nullptr, nullptr));
        if (SSL_CTX_use_certificate(context.get(), certificate.get()) != 1 ||
            SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1)
            throw std::runtime_error("the test server's certificate is unusable");
    }
};

class MisbehavingServer::Connection final : public ServerConnection {
public:
    Connection(MisbehavingServer& server, int socket)
        : server(server),
          socket(socket),
          ssl(server.tls ? SSL_new(server.tls->context.get()) : nullptr) {
        if (ssl)
            SSL_set_fd(ssl.get(), socket);
    }

    bool handshake() { return !ssl || SSL_accept(ssl.get()) == 1; }

    std::optional<WireRequest> read() override {
        while (buffer.find("\r\n\r\n") == std::string::npos)
            if (!readMore())
                return std::nullopt;
        const auto end = buffer.find("\r\n\r\n");
        WireRequest request = parsedHead(buffer.substr(0, end + 2));
        buffer.erase(0, end + 4);
        const std::size_t length = std::stoul(request.header("content-length").value_or("0"));
        while (buffer.size() < length)
            if (!readMore())
                return std::nullopt;
        request.body = buffer.substr(0, length);
        buffer.erase(0, length);
        server.record(request);
        return request;
    }

    bool write(std::string_view bytes) override {
        return ssl ? SSL_write(ssl.get(), bytes.data(), static_cast<int>(bytes.size())) > 0
                   : sendAll(socket, bytes);
    }

    void close() override {
        if (ssl)
            SSL_shutdown(ssl.get());
        shutdown(socket, SHUT_WR);
    }

    void breakOff() override { shutdown(socket, SHUT_RDWR); }

    void waitForPeer() override {
        while (readMore())
            buffer.clear();
    }

    bool peerStirs(std::chrono::milliseconds limit) override {
        pollfd waiting = {socket, POLLIN, 0};
        return (ssl && SSL_pending(ssl.get()) > 0) ||
               poll(&waiting, 1, static_cast<int>(limit.count())) > 0;
    }

    void relayTo(std::uint16_t port) override {
        const int target = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const sockaddr_in address = loopback(port);
        bool open =
            connect(target, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        while (open) {
            pollfd ends[] = {{socket, POLLIN, 0}, {target, POLLIN, 0}};
            open = poll(ends, 2, -1) > 0;
            if (open && ends[0].revents != 0)
                open = relayOnce(socket, target);
            if (open && ends[1].revents != 0)
                open = relayOnce(target, socket);
        }
        ::close(target);
    }

private:
    bool readMore() {
        char bytes[16 * 1024];
        const auto count = ssl ? SSL_read(ssl.get(), bytes, sizeof bytes)
                               : static_cast<int>(recv(socket, bytes, sizeof bytes, 0));
        if (count > 0)
            buffer.append(bytes, static_cast<std::size_t>(count));
        return count > 0;
    }

    MisbehavingServer& server;
    int socket;
    SslPointer<SSL> ssl;
    std::string buffer;
};

MisbehavingServer::MisbehavingServer(const Identity& identity, Behaviour behaviour)
    : behaviour(std::move(behaviour)), tls(std::make_unique<Tls>(identity)) {
    const SSL_CTX_alpn_select_cb_func note = [](SSL*, const unsigned char**, unsigned char*,
                                                const unsigned char* offer, unsigned int size,
                                                void* server) {
        std::vector<std::string> protocols;
        for (unsigned int at = 0; at < size; at += 1 + offer[at])
            protocols.emplace_back(reinterpret_cast<const char*>(offer) + at + 1, offer[at]);
        static_cast<MisbehavingServer*>(server)->recordOffer(std::move(protocols));
        return SSL_TLSEXT_ERR_NOACK;
    };
    SSL_CTX_set_alpn_select_cb(tls->context.get(), note, this);
    listenOnLoopback();
}

MisbehavingServer::MisbehavingServer(Behaviour behaviour) : behaviour(std::move(behaviour)) {
    listenOnLoopback();
}

void MisbehavingServer::listenOnLoopback() {
    std::signal(SIGPIPE, SIG_IGN);
    listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(listener, 16) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error("no free port on the loopback device");
    port_ = ntohs(address.sin_port);
    acceptor = std::thread([this] { acceptAll(); });
}

MisbehavingServer::~MisbehavingServer() {
    {
        const std::lock_guard lock(mutex);
        stopping = true;
        shutdown(listener, SHUT_RDWR);
        for (const int socket : open)
            shutdown(socket, SHUT_RDWR);
    }
    acceptor.join();
    for (std::thread& worker : workers)
        worker.join();
    ::close(listener);
}

void MisbehavingServer::acceptAll() {
    while (true) {
        const int socket = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex);
        if (socket < 0 || stopping) {
            if (socket >= 0)
                ::close(socket);
            return;
        }
        ++accepted;
        open.push_back(socket);
        workers.emplace_back([this, socket] { serve(socket); });
    }
}

void MisbehavingServer::serve(int socket) {
    {
        Connection connection(*this, socket);
        if (connection.handshake())
            behaviour(connection);
    }
    const std::lock_guard lock(mutex);
    std::erase(open, socket);
    ::close(socket);
    ++ended;
}

void MisbehavingServer::record(const WireRequest& request) {
    const std::lock_guard lock(mutex);
    seen.push_back(request);
}

void MisbehavingServer::recordOffer(std::vector<std::string> protocols) {
    const std::lock_guard lock(mutex);
    offered = std::move(protocols);
}

MisbehavingServer::Behaviour MisbehavingServer::answering(Answer answer) {
    return [answer = std::move(answer)](ServerConnection& connection) {
        while (const auto request = connection.read())
            if (!connection.write(answer(*request)))
                return;
    };
}

MisbehavingServer::Behaviour MisbehavingServer::saying(std::string bytes) {
    return [bytes = std::move(bytes)](ServerConnection& connection) {
        if (!connection.read())
            return;
        connection.write(bytes);
        connection.close();
        connection.waitForPeer();
    };
}

Url MisbehavingServer::url(std::string_view path) const {
    return Url::parse(origin() + std::string(path)).value();
}

std::string MisbehavingServer::origin() const {
    return "https://localhost:" + std::to_string(port_);
}

std::vector<std::string> MisbehavingServer::offeredProtocols() const {
    const std::lock_guard lock(mutex);
    return offered;
}

std::vector<WireRequest> MisbehavingServer::requests() const {
    const std::lock_guard lock(mutex);
    return seen;
}

int MisbehavingServer::connectionCount() const {
    const std::lock_guard lock(mutex);
    return accepted;
}

int MisbehavingServer::endedCount() const {
    const std::lock_guard lock(mutex);
    return ended;
}

std::string httpReply(std::string_view body, std::string_view extraHeaders,
                      std::string_view status) {
    std::string reply = "HTTP/1.1 ";
    reply.append(status).append("\r\nContent-Length: ").append(std::to_string(body.size()));
    reply.append("\r\n").append(extraHeaders).append("\r\n").append(body);
    return reply;
}

} // namespace kelo::test
