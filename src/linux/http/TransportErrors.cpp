#include "linux/http/TransportErrors.h"

#include "base/Translation.h"

#include <libsoup/soup.h>

#include <string>
#include <utility>

namespace kelo::http {

namespace {

std::string causeOf(const GError& error) {
    return std::string(g_quark_to_string(error.domain)) + " " + std::to_string(error.code) + ": " +
           error.message;
}

// text: of untranslated(), with the host for "%1".
Failure cannotConnect(const char* text, const Url& url, const GError& error) {
    return {FailureKind::cannotConnect, translated(text, {url.host()}), causeOf(error)};
}

Failure notFound(const Url& url, const GError& error) {
    return cannotConnect(
        untranslated("Could not find %1. Check the network connection and try again."), url, error);
}

Failure connectionLost(const Url& url, const GError& error) {
    return cannotConnect(untranslated("The connection to %1 was lost. Try again."), url, error);
}

Failure connectionFailed(const Url& url, const GError& error) {
    return cannotConnect(
        untranslated(
            "Could not connect to %1: The connection failed. Check the network and try again."),
        url, error);
}

// text: of untranslated(), with the host for "%1" and the proxy for "%2".
Failure proxyFailed(const char* text, const Url& url, const std::string& proxy, std::string cause) {
    return {FailureKind::cannotConnect, translated(text, {url.host(), proxy}), std::move(cause)};
}

constexpr const char* needsPassword =
    untranslated("Could not connect to %1: The proxy %2 asks for a password, which Kelo does not "
                 "have. Ask those who run the proxy.");

Failure connectionError(const GError& error, const Url& url) {
    switch (error.code) {
    case G_IO_ERROR_CONNECTION_REFUSED:
        return cannotConnect(untranslated("Could not connect to %1: Connection refused."), url,
                             error);
    case G_IO_ERROR_HOST_NOT_FOUND:
        return notFound(url, error);
    case G_IO_ERROR_HOST_UNREACHABLE:
    case G_IO_ERROR_NETWORK_UNREACHABLE:
        return cannotConnect(untranslated("Could not connect to %1: The network does not reach it. "
                                          "Check the network connection."),
                             url, error);
    case G_IO_ERROR_TIMED_OUT:
        return cannotConnect(
            untranslated("Could not connect to %1: It did not answer. Try again later."), url,
            error);
    case G_IO_ERROR_PROXY_FAILED:
    case G_IO_ERROR_PROXY_AUTH_FAILED:
    case G_IO_ERROR_PROXY_NEED_AUTH:
    case G_IO_ERROR_PROXY_NOT_ALLOWED:
        return cannotConnect(untranslated("Could not connect to %1: The proxy refused. Check the "
                                          "proxy settings of this computer."),
                             url, error);
    case G_IO_ERROR_CONNECTION_CLOSED:
    case G_IO_ERROR_PARTIAL_INPUT:
        return connectionLost(url, error);
    default:
        return connectionFailed(url, error);
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
        return {
            FailureKind::insecure,
            translated(
                "Could not set up a secure connection to %1, so nothing was sent. Try again later.",
                {url.host()}),
            causeOf(error)};
    if (error.domain == G_IO_ERROR)
        return connectionError(error, url);
    return connectionFailed(url, error);
}

Failure noProxyError(const GError& error, const std::string& proxy, const Url& url) {
    return proxyFailed(untranslated("Could not connect to %1: The proxy %2 cannot be reached. "
                                    "Check the network connection and the proxy settings."),
                       url, proxy, causeOf(error));
}

Failure proxyError(const GError& error, const std::string& proxy, const Url& url) {
    const bool wantsPassword = g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_PROXY_NEED_AUTH) ||
                               g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_PROXY_AUTH_FAILED);
    return proxyFailed(wantsPassword
                           ? needsPassword
                           : untranslated("Could not connect to %1: The proxy %2 gave no "
                                          "connection. Check the proxy settings of this computer."),
                       url, proxy, causeOf(error));
}

Failure proxyRefusalError(int status, const std::string& proxy, const Url& url) {
    const std::string cause = "the proxy answered CONNECT with " + std::to_string(status);
    if (status == SOUP_STATUS_PROXY_AUTHENTICATION_REQUIRED)
        return proxyFailed(needsPassword, url, proxy, cause);
    if (status >= 500)
        return proxyFailed(
            untranslated(
                "Could not connect to %1: The proxy %2 could not reach it. Try again later."),
            url, proxy, cause);
    return proxyFailed(untranslated("Could not connect to %1: The proxy %2 refused. Check the "
                                    "proxy settings of this computer."),
                       url, proxy, cause);
}

Failure certificateError(GTlsCertificateFlags problems, const Url& url) {
    const std::string cause = "certificate flags " + std::to_string(static_cast<int>(problems));
    // Under an unknown authority, names and dates in the certificate prove nothing.
    const char* text = untranslated("The certificate of %1 is not trusted on this computer, so "
                                    "nothing was sent. Ask those who run the service.");
    if ((problems & G_TLS_CERTIFICATE_UNKNOWN_CA) == 0) {
        if (problems & G_TLS_CERTIFICATE_REVOKED) {
            text = untranslated("The certificate of %1 was withdrawn, so nothing was sent. Ask "
                                "those who run the service.");
        } else if (problems & G_TLS_CERTIFICATE_BAD_IDENTITY) {
            text = untranslated("The certificate of %1 is made out to another host, so nothing was "
                                "sent. Ask those who run the service.");
        } else if (problems & G_TLS_CERTIFICATE_EXPIRED) {
            text = untranslated("The certificate of %1 has expired, so nothing was sent. Check the "
                                "clock of this computer, or ask those who run the service.");
        } else if (problems & G_TLS_CERTIFICATE_NOT_ACTIVATED) {
            text = untranslated("The certificate of %1 is not valid yet, so nothing was sent. "
                                "Check the clock of this computer.");
        }
    }
    return {FailureKind::insecure, translated(text, {url.host()}), cause};
}

Failure timeOutError(const std::string& host, std::chrono::seconds limit) {
    return {FailureKind::timedOut,
            translatedCount("%2 did not answer within %1 second. Try again later.",
                            "%2 did not answer within %1 seconds. Try again later.",
                            static_cast<unsigned long>(limit.count()), {host})};
}

Failure proxyTimeOutError(const std::string& proxy, std::chrono::seconds limit) {
    return {FailureKind::timedOut,
            translatedCount("The proxy %2 did not answer within %1 second. Try again later.",
                            "The proxy %2 did not answer within %1 seconds. Try again later.",
                            static_cast<unsigned long>(limit.count()), {proxy})};
}

Failure replyBrokenOffError(const Url& url, std::string cause) {
    return {FailureKind::badReply,
            translated("The reply from %1 broke off before its end. Try again.", {url.host()}),
            std::move(cause)};
}

Failure unreadableReplyError(const Url& url, std::string cause) {
    return {FailureKind::badReply,
            translated("%1 sent a reply that Kelo could not read. Try again later.", {url.host()}),
            std::move(cause)};
}

Failure replyTooLongError(const Url& url) {
    return {FailureKind::badReply,
            translated("The reply from %1 was longer than 1 MiB and was dropped. Try again later.",
                       {url.host()})};
}

} // namespace kelo::http
