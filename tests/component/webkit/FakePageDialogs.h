#pragma once

#include "linux/window/PageDialogs.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelo::test {

/// Keeps what pages ask, and answers when the test says so.
class FakePageDialogs final : public window::PageDialogs {
public:
    struct Asked {
        window::PageQuestion question;
        GtkWindow* parent;
        std::function<void(const window::PageAnswer&)> answered;
        std::weak_ptr<bool> life;
        bool isOpen() const { return !life.expired(); }
    };

    std::unique_ptr<window::PageDialog>
    show(const window::PageQuestion& question, GtkWindow* parent,
         std::function<void(const window::PageAnswer&)> answered) override {
        auto dialog = std::make_unique<Dialog>();
        asked.push_back({question, parent, std::move(answered), dialog->life});
        return dialog;
    }
    void answer(window::PageAnswer given) const {
        const auto answered = asked.back().answered;
        answered(given);
    }
    bool anyOpen() const { return std::ranges::any_of(asked, &Asked::isOpen); }

    std::vector<Asked> asked;

private:
    struct Dialog final : window::PageDialog {
        std::shared_ptr<bool> life = std::make_shared<bool>();
    };
};

} // namespace kelo::test
