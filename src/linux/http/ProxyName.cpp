#include "linux/http/ProxyName.h"

#include "linux/gobject/AsyncResult.h"
#include "linux/http/SoupUri.h"

#include <memory>

namespace kelo::http {

namespace {

struct ListDeleter {
    void operator()(char** list) const { g_strfreev(list); }
};

} // namespace

std::string proxyName(const char* address) {
    const SoupUri uri(address ? g_uri_parse(address, soupUriFlags, nullptr) : nullptr);
    const char* const host = uri ? g_uri_get_host(uri.get()) : nullptr;
    if (!host)
        return {};
    std::string name = host;
    if (name.find(':') != std::string::npos)
        name = "[" + name + "]";
    const int port = g_uri_get_port(uri.get());
    return port > 0 ? name + ":" + std::to_string(port) : name;
}

std::string proxyBehind(GIOStream* connection) {
    if (!G_IS_SOCKET_CONNECTION(connection))
        return {};
    const auto address = gobject::GObjectPointer<GSocketAddress>::adopt(
        g_socket_connection_get_remote_address(G_SOCKET_CONNECTION(connection), nullptr));
    if (!address || !G_IS_PROXY_ADDRESS(address.get()))
        return {};
    return proxyName(g_proxy_address_get_uri(G_PROXY_ADDRESS(address.get())));
}

Task<std::string> proxyFor(gobject::GObjectPointer<GProxyResolver> resolver, Url url,
                           GCancellable* cancellable) {
    if (!resolver)
        resolver = gobject::GObjectPointer<GProxyResolver>::share(g_proxy_resolver_get_default());
    const auto start = [&resolver, &url, cancellable](GAsyncReadyCallback ready, gpointer data) {
        g_proxy_resolver_lookup_async(resolver.get(), url.absoluteString().c_str(), cancellable,
                                      ready, data);
    };
    const auto result = co_await gobject::asyncResult(start);
    const std::unique_ptr<char*, ListDeleter> proxies(
        g_proxy_resolver_lookup_finish(resolver.get(), result.get(), nullptr));
    co_return proxies ? proxyName(*proxies) : std::string();
}

} // namespace kelo::http
