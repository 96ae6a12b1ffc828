#pragma once

#include "base/async/Task.h"
#include "platform/Alert.h"

#include <memory>

namespace kelo::downloads {

class DownloadList;

/// Whether the program may end. While downloads run, the user is asked; if the answer is yes, they
/// are cancelled and nothing is left of them. alerts: must outlive the task.
Task<bool> mayEndDownloads(std::shared_ptr<DownloadList> list, platform::AlertPresenter& alerts);

} // namespace kelo::downloads
