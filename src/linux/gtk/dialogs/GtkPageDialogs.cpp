#include "linux/gtk/dialogs/GtkPageDialogs.h"

#include "base/async/MainLoop.h"
#include "linux/gtk/dialogs/PageDialogWindow.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <utility>

namespace kelo::gtk {

namespace {

/// As long as a window manager may need to give the keyboard back to the page's window.
constexpr std::chrono::seconds turnOfTheManager{1};

class OpenDialog final : public window::PageDialog {
public:
    OpenDialog(window::PageQuestion question, GtkWindow* parent,
               std::shared_ptr<GtkPageDialogs::Shared> shared,
               std::function<void(const window::PageAnswer&)> answered)
        : question(std::move(question)),
          parent(parent ? Glib::wrap(parent) : nullptr),
          shared(std::move(shared)),
          answered(std::move(answered)) {
        open();
    }
    ~OpenDialog() override { others.disconnect(); }

private:
    void open() {
        if (auto* const other = question.isUrgent ? nullptr : ModalWindow::topmost())
            waitFor(*other);
        else
            present();
    }

    void waitFor(ModalWindow& other) {
        others = other.signal_unmap().connect([this] {
            others.disconnect();
            hasWaited = true;
            MainLoop::main().post([alive = std::weak_ptr(self)] {
                if (const auto dialog = alive.lock())
                    (*dialog)->open();
            });
        });
    }

    void present() {
        window.emplace(question, parent, shared->now, [this](const window::PageAnswer& answer) {
            shared->lastAnswer = shared->now();
            answered(answer);
        });
        if (mayTakeKeyboard())
            window->present();
        else
            showWithoutFocus(*window);
    }

    // Somebody may be typing in another program.
    bool mayTakeKeyboard() const {
        return question.isUrgent || hasWaited || !parent || parent->is_active() ||
               (shared->lastAnswer && shared->now() < *shared->lastAnswer + turnOfTheManager);
    }

    window::PageQuestion question;
    Gtk::Window* parent;
    std::shared_ptr<GtkPageDialogs::Shared> shared;
    std::function<void(const window::PageAnswer&)> answered;
    std::shared_ptr<OpenDialog*> self = std::make_shared<OpenDialog*>(this);
    sigc::connection others;
    bool hasWaited = false; ///< for a dialog that the user has answered
    std::optional<PageDialogWindow> window;
};

} // namespace

GtkPageDialogs::GtkPageDialogs(SteadyNow now)
    : shared(std::make_shared<Shared>(Shared{std::move(now), std::nullopt})) {}

GtkPageDialogs::~GtkPageDialogs() = default;

std::unique_ptr<window::PageDialog>
GtkPageDialogs::show(const window::PageQuestion& question, GtkWindow* parent,
                     std::function<void(const window::PageAnswer&)> answered) {
    return std::make_unique<OpenDialog>(question, parent, shared, std::move(answered));
}

} // namespace kelo::gtk
