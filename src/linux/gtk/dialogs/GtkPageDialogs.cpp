#include "linux/gtk/dialogs/GtkPageDialogs.h"

#include "base/async/MainLoop.h"
#include "linux/gtk/dialogs/KeyboardTurn.h"
#include "linux/gtk/dialogs/PageDialogWindow.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <optional>
#include <utility>

namespace kelo::gtk {

namespace {

class OpenDialog final : public window::PageDialog {
public:
    OpenDialog(window::PageQuestion question, GtkWindow* parent,
               std::shared_ptr<KeyboardTurn> keyboard,
               std::function<void(const window::PageAnswer&)> answered)
        : question(std::move(question)),
          parent(parent ? Glib::wrap(parent) : nullptr),
          keyboard(std::move(keyboard)),
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
        const bool takesKeyboard = question.isUrgent || hasWaited || keyboard->isOurs(parent);
        window.emplace(question, parent, keyboard->clock(),
                       [this](const window::PageAnswer& answer) {
                           keyboard->answered();
                           answered(answer);
                       });
        if (takesKeyboard)
            window->present();
        else
            showWithoutFocus(*window);
    }

    window::PageQuestion question;
    Gtk::Window* parent;
    std::shared_ptr<KeyboardTurn> keyboard;
    std::function<void(const window::PageAnswer&)> answered;
    std::shared_ptr<OpenDialog*> self = std::make_shared<OpenDialog*>(this);
    sigc::connection others;
    bool hasWaited = false; ///< for a dialog that the user has answered
    std::optional<PageDialogWindow> window;
};

} // namespace

GtkPageDialogs::GtkPageDialogs(SteadyNow now)
    : keyboard(std::make_shared<KeyboardTurn>(std::move(now))) {}

GtkPageDialogs::~GtkPageDialogs() = default;

std::unique_ptr<window::PageDialog>
GtkPageDialogs::show(const window::PageQuestion& question, GtkWindow* parent,
                     std::function<void(const window::PageAnswer&)> answered) {
    return std::make_unique<OpenDialog>(question, parent, keyboard, std::move(answered));
}

} // namespace kelo::gtk
