#include "component/panel/PanelFixture.h"

namespace kelo::test {

namespace {

using X11Panel = PanelFixture;

TEST_F(X11Panel, TakesTheKeyboardAndGivesItBack) {
    OtherProgram other;
    settle(other);
    typeInto(other, "before");
    show();
    typeIntoPanel("hello panel");
    picture("shown");
    hide();
    until("the other program has the keyboard again",
          [&] { return windows.focused() == other.window(); });
    typeInto(other, "after");
}

TEST_F(X11Panel, CountsAsActiveOnlyWhileItHasTheKeyboard) {
    OtherProgram other;
    settle(other);
    show();
    until("the caret blinks", [&] { return content->hasCaret(); });
    other.takeKeyboard();
    until("the caret is gone", [&] { return !content->hasCaret(); });
}

} // namespace

} // namespace kelo::test
