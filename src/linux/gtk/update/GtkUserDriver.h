#pragma once

#include "base/async/Continuation.h"
#include "updater/driver/UserDriver.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelo::gtk {

struct UpdateContent;
class UpdateWindow;

/// The updater's windows on this desktop. The toolkit must be initialized. Main thread only.
class GtkUserDriver final : public updater::UserDriver {
public:
    /// openLink: opens an address in the browser, for links in release notes.
    explicit GtkUserDriver(std::function<void(const std::string&)> openLink);
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
        bool apart = false;       ///< at the start of the row
        bool moreFollows = false; ///< another content follows at once
    };

    /// Shows the content with one button for each answer. The task ends with the answer. An open
    /// question gets its fallback answer first. The last button is the default one.
    template <typename Answer>
    Task<Answer> ask(UpdateContent content, std::vector<Button<Answer>> answers, Answer fallback,
                     Attention attention);
    Task<void> tell(std::string heading, std::string sentence);
    void show(UpdateContent content, Attention attention);
    void answerWithFallback();
    /// Called after an answer. If more follows, the window stays, because otherwise it would lose
    /// its position and the keyboard focus.
    void finish(bool moreFollows);
    void hide();

    std::function<void(const std::string&)> openLink;
    std::unique_ptr<UpdateWindow> window;
    /// Answers the open question with its fallback; null if no question is open.
    std::function<void()> fallbackAnswer;
    bool isDownloading = false;
};

} // namespace kelo::gtk
