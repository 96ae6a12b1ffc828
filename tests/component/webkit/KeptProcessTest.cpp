#include "component/webkit/Descendants.h"
#include "component/webkit/WebKitFixture.h"

#include <algorithm>
#include <iterator>

namespace kelo::test {

/// What the engine keeps of the pages that a view has left.
class KeptProcess : public WebKitFixture {
protected:
    void open(const std::string& target) { WebKitFixture::open(server.url(target)); }
    std::size_t ownProcesses() const {
        const auto now = descendants(webProcess);
        std::set<pid_t> more;
        std::ranges::set_difference(now, before, std::inserter(more, more.end()));
        return more.size();
    }

    static std::string answer(const WireRequest& request) {
        const bool isolated = request.target.starts_with("/isolated");
        return page("<script>onpageshow = (event) => {"
                    "  document.title = event.persisted ? 'kept' : 'new'"
                    "}</script>",
                    isolated ? "Cross-Origin-Opener-Policy: same-origin\r\n" : "");
    }

    /// In the kernel.
    static constexpr const char* webProcess = "WebKitWebProces";
    const std::set<pid_t> before = descendants(webProcess);
    const MisbehavingServer server{identity, MisbehavingServer::answering(answer)};
    const Identity otherIdentity = authority.issue({.hosts = {"127.0.0.1"}});
    const MisbehavingServer other{otherIdentity, MisbehavingServer::answering(answer)};
};

TEST_F(KeptProcess, EndsWhenTheFirstPageHasTakenAnother) {
    makeView(server.url());
    open("/isolated");
    EXPECT_TRUE(loop.runUntil([this] { return ownProcesses() == 1; })) << ownProcesses();
}

TEST_F(KeptProcess, StaysWithAPageOfTheSameHostThatCanBeGoneBackTo) {
    makeView(server.url());
    open("/");
    open("/next");
    webkit_web_view_go_back(native());
    EXPECT_TRUE(waitForTitle("kept"));
}

TEST_F(KeptProcess, EndsWhenAnotherHostIsShown) {
    makeView(server.url());
    trust(otherIdentity, "127.0.0.1");
    open("/");
    WebKitFixture::open(*Url::parse("https://127.0.0.1:" + std::to_string(*other.url().port())));
    EXPECT_TRUE(loop.runUntil([this] { return ownProcesses() == 1; })) << ownProcesses();
    webkit_web_view_go_back(native());
    EXPECT_TRUE(waitForTitle("new"));
}

} // namespace kelo::test
