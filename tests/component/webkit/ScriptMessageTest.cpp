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
    void show(std::map<std::string, std::string> pages) {
        peer = site(std::move(pages));
        platform::WebViewConfiguration configuration;
        configuration.scriptMessageHandlers = {{messages, "kelo"}};
        makeView(peer->url(), configuration);
        open(peer->url("/"));
    }
    bool waitForMessages(std::size_t count) {
        return rig.runUntil([&] { return messages->bodies.size() >= count; });
    }
    void post(const std::string& value) {
        evaluate("webkit.messageHandlers.kelo.postMessage(" + value + ")");
    }

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

} // namespace kelo::test
