#pragma once

#include "linux/permission/PermissionAsker.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kelo::test {

/// A user who is asked, and answers when the test says so.
class FakeAsker final : public permission::PermissionAsker {
public:
    std::unique_ptr<Asked> ask(GtkWidget*, const permission::Question& question,
                               Answered given) override {
        questions.push_back(question);
        answered = std::move(given);
        return std::make_unique<Open>(isOpen);
    }

    /// Answers the open question; empty: closes it.
    void answer(std::optional<bool> isAllowed) { std::exchange(answered, nullptr)(isAllowed); }

    std::vector<permission::Question> questions;
    bool isOpen = false;

private:
    class Open final : public Asked {
    public:
        explicit Open(bool& isOpen) : isOpen(isOpen) { isOpen = true; }
        Open(const Open&) = delete;
        Open& operator=(const Open&) = delete;
        ~Open() override { isOpen = false; }

    private:
        bool& isOpen;
    };

    Answered answered;
};

} // namespace kelo::test
