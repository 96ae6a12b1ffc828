#include "voice/WeakScriptHandler.h"

#include "fakes/ScopedTestDesktop.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

struct Listener final : platform::ScriptMessageHandler {
    void didReceiveScriptMessage(platform::EmbeddedWebView& webView,
                                 const platform::ScriptMessage& message) override {
        sender = &webView;
        received = &message;
    }
    platform::EmbeddedWebView* sender = nullptr;
    const platform::ScriptMessage* received = nullptr;
};

struct WeakScriptHandlerTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    fakes::FakeWebView view{{}, {}};
    const platform::ScriptMessage message{"kelo", std::string("close")};
    std::shared_ptr<Listener> listener = std::make_shared<Listener>();
    voice::WeakScriptHandler handler{listener};
};

TEST_F(WeakScriptHandlerTest, PassesTheVeryMessageAndItsSenderOn) {
    handler.didReceiveScriptMessage(view, message);
    EXPECT_EQ(listener->sender, &view);
    EXPECT_EQ(listener->received, &message);
}

TEST_F(WeakScriptHandlerTest, DropsMessagesForATargetThatIsGone) {
    const std::weak_ptr<Listener> weak = listener;
    listener.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_NO_THROW(handler.didReceiveScriptMessage(view, message));
}

} // namespace
} // namespace kelo
