#include "linux/downloads/QuitQuestion.h"

#include "base/Translation.h"
#include "linux/downloads/DownloadList.h"

namespace kelo::downloads {

namespace {

platform::Alert question(std::size_t count) {
    platform::Alert alert;
    alert.messageText =
        translatedCount("A download is not finished", "%1 downloads are not finished", count);
    alert.informativeText = translated("What has arrived so far will be lost.");
    alert.buttons = {translated("Quit Anyway"), translated("Keep Downloading")};
    return alert;
}

} // namespace

Task<bool> mayEndDownloads(std::shared_ptr<DownloadList> list, platform::AlertPresenter& alerts) {
    if (list->runningCount() == 0)
        co_return true;
    const auto outcome = co_await alerts.runModal(question(list->runningCount()));
    if (outcome.returnCode != platform::alertFirstButtonReturn)
        co_return false;
    list->cancelAll();
    co_return true;
}

} // namespace kelo::downloads
