#include "component/webkit/WebKitFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using platform::ScriptMessage;
using platform::ScriptValue;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class MessageRecorder final : public platform::ScriptMessageHandler {
public:
    void didReceiveScriptMessage(platform::EmbeddedWebView&,
                                 const ScriptMessage& message) override {
        names.push_back(message.name);
        bodies.push_back(message.body);
    }
    std::vector<std::string> names;
    std::vector<ScriptValue> bodies;
};

} // namespace

/// A view whose pages may post to "kelo".
class ScriptMessages : public WebKitFixture {
protected:
    void SetUp() override {
        IdentityRequest request;
        request.hosts = {"other.localhost"};
        otherIdentity = authority.issue(request);
        other = std::make_unique<MisbehavingServer>(
            otherIdentity, MisbehavingServer::answering([](const WireRequest& request) {
                return page(request.target == "/" ? attempts : "");
            }));
    }

    void show(std::map<std::string, std::string> pages) {
        peer = site(std::move(pages));
        platform::WebViewConfiguration configuration;
        configuration.scriptMessageHandlers = {{messages, "kelo"}};
        makeView(peer->url(), configuration);
        open(peer->url("/"));
    }
    std::string otherAddress() const {
        return "https://other.localhost:" + std::to_string(other->port()) + "/";
    }
    bool waitForMessages(std::size_t count) {
        return loop.runUntil([&] { return messages->bodies.size() >= count; });
    }
    void post(const std::string& value) {
        evaluate("webkit.messageHandlers.kelo.postMessage(" + value + ")");
    }

    // Looks for handlers in every kind of window that it can get at without leaving its turn of the
    // event loop, posts where there are some, and tells how many.
    static constexpr const char* attempts = R"(<body><script>
const child = (change) => {
  const frame = document.createElement('iframe');
  change?.(frame);
  document.body.append(frame);
  return frame.contentWindow;
};
const windows = [window, child(), child((frame) => frame.src = '/never'),
                 child((frame) => frame.srcdoc = 'x'), child((frame) => frame.src = 'data:,'),
                 child((frame) => frame.src = URL.createObjectURL(new Blob(['x'])))];
let found = 0;
for (const inner of windows) {
  const handler = inner.webkit?.messageHandlers?.kelo;
  if (handler) ++found;
  handler?.postMessage('close');
  inner.dispatchEvent(new CustomEvent('kelo-post-kelo', {detail: 'close'}));
}
try { top.dispatchEvent(new CustomEvent('kelo-post-kelo', {detail: 'close'})); } catch { }
try { if (top !== window) top.webkit.messageHandlers.kelo.postMessage('close'); } catch { }
document.title = 'found ' + found;
top.postMessage('found ' + found, '*');
</script>)";

    Identity otherIdentity;
    std::unique_ptr<MisbehavingServer> other;
    std::shared_ptr<MessageRecorder> messages = std::make_shared<MessageRecorder>();
    std::unique_ptr<MisbehavingServer> peer;
};

TEST_F(ScriptMessages, TextsNumbersAndTruthValuesKeepTheirType) {
    show({{"/", ""}});
    post("'close'");
    post("'1'");
    post("1");
    post("-0.5");
    post("true");
    post("false");
    ASSERT_TRUE(waitForMessages(6));
    EXPECT_THAT(messages->bodies,
                ElementsAre(ScriptValue("close"), ScriptValue("1"), ScriptValue(1.0),
                            ScriptValue(-0.5), ScriptValue(true), ScriptValue(false)));
    EXPECT_EQ(messages->names.front(), "kelo");
}

TEST_F(ScriptMessages, AnythingElseHasNoValue) {
    show({{"/", ""}});
    for (const char* const value : {"{close: 'close'}", "['close']", "new String('close')", "null",
                                    "undefined", "", "10n", "Symbol('close')", "() => 1"})
        post(value);
    post("'end'");
    ASSERT_TRUE(waitForMessages(10));
    for (std::size_t index = 0; index < 9; ++index)
        EXPECT_EQ(messages->bodies[index], ScriptValue(std::monostate())) << index;
}

TEST_F(ScriptMessages, TextIsCompleteWhateverItHolds) {
    show({{"/", ""}});
    post("'close\\0'");
    post("'grüß\\u{1f600}'");
    post("''");
    ASSERT_TRUE(waitForMessages(3));
    EXPECT_THAT(messages->bodies, ElementsAre(ScriptValue(std::string("close\0", 6)),
                                              ScriptValue("grüß\U0001f600"), ScriptValue("")));
}

TEST_F(ScriptMessages, FrameOfAnotherHostCannotPost) {
    show({{"/",
           "<script>addEventListener('message', (event) => window.heard = event.data)</script>"}});
    trust(otherIdentity, "other.localhost");
    evaluate("document.body.innerHTML = '<iframe src=" + otherAddress() + "></iframe>'; 1");
    ASSERT_TRUE(waitForScript("window.heard", "found 0"));
    post("'end'");
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_THAT(messages->bodies, ElementsAre(ScriptValue("end")));
}

TEST_F(ScriptMessages, PageOfAnotherHostCannotPost) {
    show({{"/", ""}});
    trust(otherIdentity, "other.localhost");
    load(*Url::parse(otherAddress()));
    ASSERT_TRUE(waitForTitle("found 0"));
    open(peer->url("/"));
    post("'end'");
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_THAT(messages->bodies, ElementsAre(ScriptValue("end")));
}

TEST_F(ScriptMessages, PageOfAnotherPortCannotPost) {
    show({{"/", ""}});
    const auto neighbour = site({{"/", attempts}});
    load(neighbour->url("/"));
    ASSERT_TRUE(waitForTitle("found 0"));
    EXPECT_THAT(messages->bodies, IsEmpty());
}

TEST_F(ScriptMessages, FramesOfTheServiceFindNoHandlersOfTheirOwn) {
    show({{"/", "<iframe src='/frame'></iframe>"}, {"/frame", "inside"}});
    ASSERT_TRUE(waitForScript("frames[0].document.body.innerText", "inside"));
    EXPECT_EQ(evaluate("typeof frames[0].webkit"), "undefined");
    EXPECT_EQ(evaluate("typeof webkit.messageHandlers.kelo"), "object");
}

TEST_F(ScriptMessages, UnknownNamesLeadNowhere) {
    show({{"/", ""}});
    EXPECT_EQ(evaluate("Object.keys(webkit.messageHandlers).join()"), "kelo");
    evaluate("dispatchEvent(new CustomEvent('kelo-post-other', {detail: 'close'})); 1");
    post("'end'");
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_THAT(messages->bodies, ElementsAre(ScriptValue("end")));
}

TEST_F(ScriptMessages, PageCannotBreakTheRoadByReplacingWhatItIsMadeOf) {
    show({{"/", "<script>window.CustomEvent = window.dispatchEvent = null;"
                "EventTarget.prototype.addEventListener = () => {}</script>"}});
    post("'close'");
    EXPECT_TRUE(waitForMessages(1));
}

TEST_F(ScriptMessages, EveryPageFindsTheHandlersAnew) {
    show({{"/", ""}});
    open(peer->url("/"));
    post("'close'");
    EXPECT_TRUE(waitForMessages(1));
}

TEST_F(ScriptMessages, HandlerMayEndTheView) {
    class Ender final : public platform::ScriptMessageHandler {
    public:
        void didReceiveScriptMessage(platform::EmbeddedWebView&, const ScriptMessage&) override {
            end();
            ended = true;
        }
        std::function<void()> end;
        bool ended = false;
    };
    const auto ender = std::make_shared<Ender>();
    ender->end = [this] { endSession(); };
    peer =
        site({{"/", "<script>onload = () => webkit.messageHandlers.kelo.postMessage(1)</script>"}});
    platform::WebViewConfiguration configuration;
    configuration.scriptMessageHandlers = {{ender, "kelo"}};
    makeView(peer->url(), configuration);
    load(peer->url("/"));
    EXPECT_TRUE(loop.runUntil([&] { return ender->ended; }));
}

} // namespace kelo::test
