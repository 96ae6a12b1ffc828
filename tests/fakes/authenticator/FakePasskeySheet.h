#pragma once

#include "authenticator/consent/PasskeySheet.h"
#include "base/async/Continuation.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::fakes {

/// What the user does with the sheets, and what they have shown.
struct SheetScript {
    /// The account that the user accepts; empty: the user cancels.
    std::optional<std::size_t> choice = 0;
    /// Leaves the question of the sheet open.
    bool leavesOpen = false;
    /// Answers to the prompts of the verification, in order. When none is left, the user cancels.
    std::deque<std::string> answers;
    /// Run at each question of the verification, before it is answered.
    std::function<void()> whenAsked;
    /// Leaves the questions of the verification open.
    bool leavesQuestionsOpen = false;

    std::vector<authenticator::ConsentRequest> requests;
    /// "sheet", "confirm", "verify", "create", "sign", "closed" in the order they happened.
    std::vector<std::string> events;
    /// The texts of the verification: "? text" hidden, "! text" visible, "i text", "e text".
    std::vector<std::string> words;
    std::shared_ptr<platform::Window> anchor;
    std::function<void()> cancelAction;

    void pressCancel() {
        if (const auto action = cancelAction)
            action();
    }
};

class FakePasskeySheet final : public authenticator::PasskeySheet {
public:
    explicit FakePasskeySheet(SheetScript& script) : script(script) {
        script.events.emplace_back("sheet");
    }
    FakePasskeySheet(const FakePasskeySheet&) = delete;
    FakePasskeySheet& operator=(const FakePasskeySheet&) = delete;
    ~FakePasskeySheet() override {
        script.cancelAction = nullptr;
        script.events.emplace_back("closed");
    }

    Task<std::optional<std::size_t>> confirm(authenticator::ConsentRequest request) override {
        script.events.emplace_back("confirm");
        script.requests.push_back(std::move(request));
        if (script.leavesOpen)
            co_await never();
        co_return script.choice;
    }

    Task<std::optional<SecretText>> ask(authenticator::VerificationPrompt prompt) override {
        script.words.push_back((prompt.echo ? "! " : "? ") + prompt.text);
        if (script.whenAsked)
            script.whenAsked();
        if (script.leavesQuestionsOpen)
            co_await never();
        if (script.answers.empty())
            co_return std::nullopt;
        std::optional<SecretText> answer(script.answers.front());
        script.answers.pop_front();
        co_return std::move(answer);
    }
    void showInformation(std::string text) override { script.words.push_back("i " + text); }
    void showError(std::string text) override { script.words.push_back("e " + text); }
    void onCancel(std::function<void()> action) override {
        script.cancelAction = std::move(action);
    }

private:
    static Task<void> never() {
        co_await withCheckedContinuation<void>([](CheckedContinuation<void>) {});
    }

    SheetScript& script;
};

class FakePasskeySheetFactory final : public authenticator::PasskeySheetFactory {
public:
    explicit FakePasskeySheetFactory(SheetScript& script) : script(script) {}
    std::unique_ptr<authenticator::PasskeySheet>
    makeSheet(std::shared_ptr<platform::Window> anchor) override {
        script.anchor = std::move(anchor);
        return std::make_unique<FakePasskeySheet>(script);
    }

private:
    SheetScript& script;
};

} // namespace kelo::fakes
