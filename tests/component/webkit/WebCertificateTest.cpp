#include "component/webkit/WebKitFixture.h"

#include "linux/gobject/SignalHandler.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::HasSubstr;
using testing::IsEmpty;

class WebCertificate : public WebKitFixture {
protected:
    void expectRefused(const Identity& shown, const std::string& sentence) {
        const MisbehavingServer peer(shown, MisbehavingServer::saying(page("secret")));
        recorder->finished.clear();
        makeView(peer.url());
        load(peer.url("/login"));
        ASSERT_TRUE(waitForTitle("This page is not secure"));
        EXPECT_THAT(pageText(), HasSubstr(sentence));
        EXPECT_THAT(recorder->finished, IsEmpty());
        EXPECT_THAT(peer.requests(), IsEmpty());
    }
};

TEST_F(WebCertificate, SelfSignedIsRefused) {
    expectRefused(TestAuthority::selfSigned(), "is not trusted on this computer");
}

TEST_F(WebCertificate, OfAnotherAuthorityIsRefused) {
    expectRefused(TestAuthority().issue(), "is not trusted on this computer");
}

TEST_F(WebCertificate, ExpiredIsRefused) {
    IdentityRequest request;
    request.validFrom = -std::chrono::hours(24);
    request.validUntil = -std::chrono::hours(1);
    expectRefused(authority.issue(request), "has expired");
}

TEST_F(WebCertificate, NotYetValidIsRefused) {
    IdentityRequest request;
    request.validFrom = std::chrono::hours(2);
    expectRefused(authority.issue(request), "is not valid yet");
}

TEST_F(WebCertificate, ForAnotherHostIsRefused) {
    IdentityRequest request;
    request.hosts = {"example.org"};
    expectRefused(authority.issue(request), "is made out to another host");
}

TEST_F(WebCertificate, ForAClientIsRefused) {
    IdentityRequest request;
    request.forServers = false;
    expectRefused(authority.issue(request), "is not trusted on this computer");
}

TEST_F(WebCertificate, AcceptedOneDoesNotOpenTheDoorForAnother) {
    const auto peer = site({{"/", "hello"}});
    makeView(peer->url());
    open(peer->url("/"));
    expectRefused(TestAuthority::selfSigned(), "is not trusted on this computer");
}

TEST_F(WebCertificate, RenewedOneIsAccepted) {
    const auto before = site({{"/", "before"}});
    makeView(before->url());
    open(before->url("/"));
    identity = authority.issue();
    const auto after = site({{"/", "after"}});
    open(after->url("/"));
    EXPECT_EQ(pageText(), "after");
    open(before->url("/"));
    EXPECT_EQ(pageText(), "before");
}

TEST_F(WebCertificate, SubResourcesOfTheServiceComeThrough) {
    const auto peer =
        site({{"/", "<script src='/code.js'></script>"}, {"/code.js", "window.ran=1"}});
    makeView(peer->url());
    open(peer->url("/"));
    EXPECT_EQ(evaluate("window.ran"), "1");
}

/// Another host under the same authority, which even shows the certificate of the service. It was
/// opened in the main view before: that is where a certificate can be allowed.
class WebCertificateOfAnotherHost : public WebKitFixture {
protected:
    static constexpr const char* host = "other.localhost";

    std::string address(std::string_view scheme = "https") const {
        return std::string(scheme) + "://" + host + ":" + std::to_string(other->port()) + "/";
    }

    /// Shows the page of the service, in which OTHER stands for the address of the other host.
    void visitOtherAndShow(std::string html) {
        identity = authority.issue({{"localhost", host}});
        other = site({{"/", "<script>top.postMessage('loaded', '*')</script>"}});
        for (auto at = html.find("OTHER"); at != std::string::npos; at = html.find("OTHER"))
            html.replace(at, 5, address());
        peer = site({{"/", html}});
        makeView(peer->url());
        load(*Url::parse(address()));
        ASSERT_TRUE(waitForTitle("This page is not secure"));
        EXPECT_THAT(
            pageText(),
            HasSubstr("The certificate of other.localhost is not trusted on this computer"));
        open(peer->url("/"));
    }
    void expectRefusedAgain() {
        const int before = other->endedCount();
        EXPECT_TRUE(loop.runUntil([&] { return other->endedCount() > before; }));
        EXPECT_THAT(other->requests(), IsEmpty());
    }

    std::unique_ptr<MisbehavingServer> other;
    std::unique_ptr<MisbehavingServer> peer;
};

TEST_F(WebCertificateOfAnotherHost, KeepsItsPagesOut) {
    visitOtherAndShow("hello");
    EXPECT_THAT(other->requests(), IsEmpty());
    evaluate("location = '" + address() + "'");
    ASSERT_TRUE(waitForTitle("This page is not secure"));
    EXPECT_THAT(other->requests(), IsEmpty());
    open(peer->url("/"));
    EXPECT_EQ(pageText(), "hello");
}

TEST_F(WebCertificateOfAnotherHost, KeepsItsFramesOut) {
    visitOtherAndShow("<body><script>var messages = 0; onmessage = () => ++messages;"
                      "function show() { document.body.append(Object.assign("
                      "document.createElement('iframe'), {src: 'OTHER'})) }</script>");
    evaluate("setTimeout(show)");
    expectRefusedAgain();
    EXPECT_EQ(evaluate("messages"), "0");
}

TEST_F(WebCertificateOfAnotherHost, KeepsPartsOfThePageOut) {
    visitOtherAndShow(
        "<body><script>var refused = [];"
        "const add = (tag, properties) => document.body.append(Object.assign("
        "document.createElement(tag), properties, {onerror: () => refused.push(tag)}));"
        "add('script', {src: 'OTHER'}); add('img', {src: 'OTHER'});"
        "fetch('OTHER', {mode: 'no-cors'}).catch(() => refused.push('fetch'));"
        "new WebSocket('OTHER'.replace('https', 'wss')).onerror = () => refused.push('socket');"
        "</script>");
    EXPECT_TRUE(waitForScript("refused.sort().join()", "fetch,img,script,socket"))
        << evaluate("refused.join()");
    EXPECT_THAT(other->requests(), IsEmpty());
}

TEST_F(WebCertificateOfAnotherHost, KeepsItsDownloadsOut) {
    visitOtherAndShow("hello");
    const auto download = gobject::GObjectPointer<WebKitDownload>::adopt(
        webkit_web_view_download_uri(native(), address().c_str()));
    bool failed = false;
    const auto connection = gobject::connectSignal(
        download.get(), "failed", +[](WebKitDownload*, GError*, bool* told) { *told = true; },
        &failed);
    EXPECT_TRUE(loop.runUntil([&] { return failed; }));
    EXPECT_THAT(other->requests(), IsEmpty());
}

} // namespace kelo::test
