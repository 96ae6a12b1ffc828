#pragma once

#include "base/async/Continuation.h"
#include "linux/gtk/update/UpdateWindow.h"
#include "updater/driver/UserDriver.h"

#include <gtkmm/application.h>

#include <functional>
#include <memory>

namespace kelo::gtk {

/// The updater's windows on this desktop. The toolkit must be up.
class GtkUserDriver final : public updater::UserDriver {
public:
    GtkUserDriver();
    ~GtkUserDriver() override;

    void showChecking(std::function<void()> cancel) override;
    Task<updater::UpdateChoice> showOffer(updater::UpdateOffer offer,
                                          updater::CheckKind kind) override;
    void showDownload(updater::DownloadProgress progress, std::function<void()> cancel) override;
    void showPreparing() override;
    Task<updater::RelaunchChoice> showReadyToRelaunch(updater::UpdateOffer offer) override;
    Task<void> showMessage(std::string heading, std::string sentence) override;
    Task<void> showFailure(std::string sentence) override;
    Task<bool> askForAutomaticChecks(std::string programName) override;
    bool bringToFront() override;
    void dismiss() override;

private:
    enum class Attention { take, leave };

    template <typename Answer>
    struct Button {
        std::string label;
        Answer answer;
        bool apart = false;   ///< at the start of the line
        bool leadsOn = false; ///< another content follows at once
    };

    /// Shows a content whose buttons give a value; the task ends with it. A question that was open
    /// gets its mildest answer first. The last button is the default one.
    template <typename Answer>
    Task<Answer> ask(UpdateWindow::Content content, std::vector<Button<Answer>> answers,
                     Answer mildest, Attention attention);
    Task<void> tell(std::string heading, std::string sentence);
    void show(UpdateWindow::Content content, Attention attention);
    void answerMildly();
    /// After an answer. Where more follows, the window stays: one that goes and comes again would
    /// lose its place and the keyboard.
    void finish(bool moreFollows);
    void hide();

    std::unique_ptr<UpdateWindow> window;
    /// Gives the open question its mildest answer; null when none is open.
    std::function<void()> mildAnswer;
    bool isDownloading = false;
};

} // namespace kelo::gtk
