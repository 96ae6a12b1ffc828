#pragma once

#include "linux/permission/Permissions.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

extern "C" {
typedef struct _GtkWidget GtkWidget;
}

namespace kelo::permission {

struct Question {
    /// Of the page that asks.
    std::string host;
    /// At least one.
    std::vector<Capability> capabilities;
};

/// Asks the user what a page may use. Main thread only.
class PermissionAsker {
public:
    /// A question on the screen; destroying it takes the question away, and it is not answered any
    /// more. It may be destroyed inside of its own answer.
    class Asked {
    public:
        virtual ~Asked() = default;
    };
    /// Called at most once, and never inside of ask(). Empty: the user has closed the question and
    /// not answered it.
    using Answered = std::function<void(std::optional<bool> isAllowed)>;

    virtual ~PermissionAsker() = default;
    /// page: the widget on the screen that the question is about.
    virtual std::unique_ptr<Asked> ask(GtkWidget* page, const Question& question,
                                       Answered answered) = 0;
};

} // namespace kelo::permission
