#pragma once

#include <functional>
#include <memory>
#include <string>

extern "C" {
typedef struct _GtkWindow GtkWindow;
}

namespace kelo::window {

enum class PageQuestionKind {
    alert,        ///< says something, and asks nothing
    confirm,      ///< yes or no
    prompt,       ///< a line of text
    beforeUnload, ///< whether the page may be left; its message is not shown
};

/// What a page's script says or asks. The script waits for the answer.
struct PageQuestion {
    PageQuestionKind kind = PageQuestionKind::alert;
    /// Whose page it is; empty if that is not known.
    std::string host = {};
    /// Both as the page gave them: any length and any characters.
    std::string message = {};
    std::string defaultText = {}; ///< of a prompt
    /// Whether the user can refuse more dialogs of this page.
    bool mayBeSilenced = false;
    /// The user has just asked for what this is about. It comes above any other dialog then, and
    /// otherwise after those that are open.
    bool isUrgent = false;
};

struct PageAnswer {
    /// True for the affirmative button: OK, or to leave the page.
    bool isConfirmed = false;
    std::string text = {}; ///< of a confirmed prompt
    bool silencesPage = false;
};

/// A dialog that is shown, or waits to be. Destroying it closes it without an answer.
class PageDialog {
public:
    virtual ~PageDialog() = default;
};

/// Shows what pages say and ask. Main thread only.
class PageDialogs {
public:
    virtual ~PageDialogs() = default;
    /// parent: the window of the page; null if it is not on the screen. answered is called at most
    /// once, later than this returns, and must not destroy the dialog before the next turn of the
    /// main loop.
    virtual std::unique_ptr<PageDialog> show(const PageQuestion& question, GtkWindow* parent,
                                             std::function<void(const PageAnswer&)> answered) = 0;
};

} // namespace kelo::window
