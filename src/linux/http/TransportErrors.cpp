#include "linux/http/TransportErrors.h"

#include <libsoup/soup.h>

#include <string>
#include <utility>

namespace kelo::http {

namespace {

std::string causeOf(const GError& error) {
    return std::string(g_quark_to_string(error.domain)) + " " + std::to_string(error.code) + ": " +
           error.message;
}

Failure cannotConnect(const Url& url, const std::string& reason, const GError& error) {
    return {FailureKind::cannotConnect, "Could not connect to " + url.host() + ": " + reason,
            causeOf(error)};
}

Failure notFound(const Url& url, const GError& error) {
    return {FailureKind::cannotConnect,
            "Could not find " + url.host() + ". Check the network connection and try again.",
            causeOf(error)};
}

Failure connectionLost(const Url& url, const GError& error) {
    return {FailureKind::cannotConnect, "The connection to " + url.host() + " was lost. Try again.",
            causeOf(error)};
}

Failure proxyFailed(const Url& url, const std::string& proxy, const std::string& reason,
                    std::string cause) {
    return {FailureKind::cannotConnect,
            "Could not connect to " + url.host() + ": The proxy " + proxy + " " + reason,
            std::move(cause)};
}

constexpr const char* checkProxy = "Check the proxy settings of this computer.";
constexpr const char* needsPassword =
    "asks for a password, which Kelo does not have. Ask those who run the proxy.";

Failure connectionError(const GError& error, const Url& url) {
    switch (error.code) {
    case G_IO_ERROR_CONNECTION_REFUSED:
        return cannotConnect(url, "Connection refused.", error);
    case G_IO_ERROR_HOST_NOT_FOUND:
        return notFound(url, error);
    case G_IO_ERROR_HOST_UNREACHABLE:
    case G_IO_ERROR_NETWORK_UNREACHABLE:
        return cannotConnect(url, "The network does not reach it. Check the network connection.",
                             error);
    case G_IO_ERROR_TIMED_OUT:
        return cannotConnect(url, "It did not answer. Try again later.", error);
    case G_IO_ERROR_PROXY_FAILED:
    case G_IO_ERROR_PROXY_AUTH_FAILED:
    case G_IO_ERROR_PROXY_NEED_AUTH:
    case G_IO_ERROR_PROXY_NOT_ALLOWED:
        return cannotConnect(url, std::string("The proxy refused. ") + checkProxy, error);
    case G_IO_ERROR_CONNECTION_CLOSED:
    case G_IO_ERROR_PARTIAL_INPUT:
        return connectionLost(url, error);
    default:
        return cannotConnect(url, "The connection failed. Check the network and try again.", error);
    }
}

} // namespace

Failure transportError(const GError& error, TransferPhase phase, const Url& url) {
    if (error.domain == SOUP_SESSION_ERROR)
        return unreadableReplyError(url, causeOf(error));
    if (phase == TransferPhase::insideReply)
        return replyBrokenOffError(url, causeOf(error));
    // Nobody can tell what has become of a request that was on its way by then. GnuTLS reports an
    // end without a close notification as an error of TLS.
    if (phase == TransferPhase::awaitingReply ||
        g_error_matches(&error, G_TLS_ERROR, G_TLS_ERROR_EOF))
        return connectionLost(url, error);
    if (error.domain == G_RESOLVER_ERROR)
        return notFound(url, error);
    if (error.domain == G_TLS_ERROR)
        return {FailureKind::insecure,
                "Could not set up a secure connection to " + url.host() +
                    ", so nothing was sent. Try again later.",
                causeOf(error)};
    if (error.domain == G_IO_ERROR)
        return connectionError(error, url);
    return cannotConnect(url, "The connection failed. Check the network and try again.", error);
}

Failure noProxyError(const GError& error, const std::string& proxy, const Url& url) {
    return proxyFailed(url, proxy,
                       "cannot be reached. Check the network connection and the proxy settings.",
                       causeOf(error));
}

Failure proxyError(const GError& error, const std::string& proxy, const Url& url) {
    const bool wantsPassword = g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_PROXY_NEED_AUTH) ||
                               g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_PROXY_AUTH_FAILED);
    return wantsPassword ? proxyFailed(url, proxy, needsPassword, causeOf(error))
                         : proxyFailed(url, proxy, std::string("gave no connection. ") + checkProxy,
                                       causeOf(error));
}

Failure proxyRefusalError(int status, const std::string& proxy, const Url& url) {
    const std::string cause = "the proxy answered CONNECT with " + std::to_string(status);
    if (status == SOUP_STATUS_PROXY_AUTHENTICATION_REQUIRED)
        return proxyFailed(url, proxy, needsPassword, cause);
    if (status >= 500)
        return proxyFailed(url, proxy, "could not reach it. Try again later.", cause);
    return proxyFailed(url, proxy, std::string("refused. ") + checkProxy, cause);
}

Failure certificateError(GTlsCertificateFlags problems, const Url& url) {
    const std::string cause = "certificate flags " + std::to_string(static_cast<int>(problems));
    // Under an unknown authority, names and dates in the certificate prove nothing.
    std::string problem = "is not trusted on this computer";
    std::string advice = "Ask those who run the service.";
    if ((problems & G_TLS_CERTIFICATE_UNKNOWN_CA) == 0) {
        if (problems & G_TLS_CERTIFICATE_REVOKED) {
            problem = "was withdrawn";
        } else if (problems & G_TLS_CERTIFICATE_BAD_IDENTITY) {
            problem = "is made out to another host";
        } else if (problems & G_TLS_CERTIFICATE_EXPIRED) {
            problem = "has expired";
            advice = "Check the clock of this computer, or ask those who run the service.";
        } else if (problems & G_TLS_CERTIFICATE_NOT_ACTIVATED) {
            problem = "is not valid yet";
            advice = "Check the clock of this computer.";
        }
    }
    return {FailureKind::insecure,
            "The certificate of " + url.host() + " " + problem + ", so nothing was sent. " + advice,
            cause};
}

Failure timeOutError(const std::string& whoIsSilent, std::chrono::seconds limit) {
    const std::string unit = limit.count() == 1 ? " second" : " seconds";
    return {FailureKind::timedOut, whoIsSilent + " did not answer within " +
                                       std::to_string(limit.count()) + unit + ". Try again later."};
}

Failure replyBrokenOffError(const Url& url, std::string cause) {
    return {FailureKind::badReply,
            "The reply from " + url.host() + " broke off before its end. Try again.",
            std::move(cause)};
}

Failure unreadableReplyError(const Url& url, std::string cause) {
    return {FailureKind::badReply,
            url.host() + " sent a reply that Kelo could not read. Try again later.",
            std::move(cause)};
}

Failure replyTooLongError(const Url& url) {
    return {FailureKind::badReply, "The reply from " + url.host() +
                                       " was longer than 1 MiB and was dropped. Try again "
                                       "later."};
}

} // namespace kelo::http
