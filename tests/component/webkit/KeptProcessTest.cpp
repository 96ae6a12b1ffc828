#include "component/webkit/Descendants.h"
#include "component/webkit/WebKitFixture.h"

#include <algorithm>
#include <iterator>

namespace kelo::test {

/// What the engine keeps of the pages that a view has left.
class KeptProcess : public WebKitFixture {
protected:
    void open(const std::string& target) { WebKitFixture::open(server.url(target)); }
    std::set<pid_t> ownProcesses() const {
        const auto now = descendants(webProcess);
        std::set<pid_t> more;
        std::ranges::set_difference(now, before, std::inserter(more, more.end()));
        return more;
    }
    static bool anyLives(const std::set<pid_t>& processes) {
        const auto now = descendants(webProcess);
        return std::ranges::any_of(processes, [&](pid_t process) { return now.contains(process); });
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
    EXPECT_TRUE(loop.runUntil([this] { return ownProcesses().size() == 1; }))
        << ownProcesses().size();
}

TEST_F(KeptProcess, StaysWithAPageOfTheSameHostThatCanBeGoneBackTo) {
    makeView(server.url());
    open("/");
    open("/next");
    webkit_web_view_go_back(native());
    EXPECT_TRUE(waitForTitle("kept"));
}

// One that has shown nothing yet may be there afterwards: the engine begins it for the next host.
TEST_F(KeptProcess, EndsWhenAnotherHostIsShown) {
    makeView(server.url());
    trust(otherIdentity, "127.0.0.1");
    open("/");
    const auto left = ownProcesses();
    WebKitFixture::open(*Url::parse("https://127.0.0.1:" + std::to_string(*other.url().port())));
    EXPECT_TRUE(loop.runUntil([&] { return !anyLives(left); }));
    webkit_web_view_go_back(native());
    EXPECT_TRUE(waitForTitle("new"));
}

} // namespace kelo::test
