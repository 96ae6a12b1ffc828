#include "component/webkit/WebKitFixture.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kelo::test {

/// The protocol's cache policy: the headers of a response say whether it may be used again.
class PageCache : public WebKitFixture {
protected:
    /// How often the server is asked for a page that the view loads twice.
    long requestsForTwoLoads(const std::string& cacheHeader) {
        const MisbehavingServer peer(
            identity, MisbehavingServer::answering([cacheHeader](const WireRequest& request) {
                return page(request.target, request.target == "/page" ? cacheHeader : "");
            }));
        makeView(peer.url());
        open(peer.url("/page"));
        open(peer.url("/between"));
        open(peer.url("/page"));
        EXPECT_EQ(pageText(), "/page");
        const auto requests = peer.requests();
        return std::ranges::count(requests, "/page", &WireRequest::target);
    }
};

TEST_F(PageCache, FreshResponseIsUsedAgain) {
    EXPECT_EQ(requestsForTwoLoads("Cache-Control: max-age=3600\r\n"), 1);
}

TEST_F(PageCache, ResponseThatMustNotBeStoredIsRequestedAgain) {
    EXPECT_EQ(requestsForTwoLoads("Cache-Control: no-store\r\n"), 2);
}

} // namespace kelo::test
