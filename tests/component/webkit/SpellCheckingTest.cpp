#include "component/ScopedVariable.h"
#include "component/webkit/MainWindowFixture.h"

namespace kelo::test {

class SpellChecking : public MainWindowFixture {
protected:
    void SetUp() override {
        // Other tests may have had it switched on.
        webkit_web_context_set_spell_checking_enabled(context(), FALSE);
        openInMainWindow({{"/", "<body><textarea id=field></textarea>"}});
        pointer.click(placeOf("#field"));
        ASSERT_TRUE(waitForScript("document.activeElement.id", "field"));
    }
    void TearDown() override { webkit_web_context_set_spell_checking_enabled(context(), FALSE); }

    static WebKitWebContext* context() { return webkit_web_context_get_default(); }
    static bool isOn() { return webkit_web_context_get_spell_checking_enabled(context()) != FALSE; }
    bool waitUntilOn() {
        return loop.runUntil([] { return isOn(); });
    }

    const ScopedVariable language{"LANGUAGE", "en_US"};
    const ScopedVariable locale{"LC_ALL", "C.UTF-8"};
};

TEST_F(SpellChecking, WaitsForTheFirstLetter) {
    press("Shift_L");
    press("Control_L");
    settle();
    EXPECT_FALSE(isOn());
    press("w");
    EXPECT_TRUE(waitUntilOn());
    ASSERT_TRUE(waitForScript("field.value", "w")) << "the letter does not get lost";
}

TEST_F(SpellChecking, BeginsWithWhatAnInputMethodWrites) {
    for (const char* signal : {"preedit-started", "committed"}) {
        webkit_web_context_set_spell_checking_enabled(context(), FALSE);
        WebKitInputMethodContext* const input = webkit_web_view_get_input_method_context(native());
        g_signal_emit_by_name(input, signal, "w");
        EXPECT_TRUE(waitUntilOn()) << signal;
    }
}

TEST_F(SpellChecking, TakesTheLanguagesOfTheUser) {
    press("w");
    ASSERT_TRUE(waitUntilOn());
    const char* const* const found = webkit_web_context_get_spell_checking_languages(context());
    if (!found || !found[0])
        GTEST_SKIP() << "there is no English dictionary";
    EXPECT_STREQ(found[0], "en_US");
    EXPECT_EQ(found[1], nullptr);
}

TEST_F(SpellChecking, StaysOffForAUserWithoutALanguage) {
    const ScopedVariable none("LANGUAGE", std::nullopt);
    press("w");
    ASSERT_TRUE(waitForScript("field.value", "w"));
    settle();
    EXPECT_FALSE(isOn());
}

} // namespace kelo::test
