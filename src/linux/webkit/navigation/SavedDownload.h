#pragma once

#include "linux/downloads/DownloadList.h"

#include <webkit/webkit.h>

#include <memory>
#include <string>

namespace kelo::webkit {

/// Saves what the engine downloads in the user's downloads folder, and tells the list what becomes
/// of it. Call it when the download starts. What is not complete is never seen under the file's
/// name; of a download that fails or is cancelled, nothing is left.
void saveDownload(WebKitDownload* download, std::shared_ptr<downloads::DownloadList> list);

/// The list of all downloads of the session. Set it before there is a view.
void setDownloadList(WebKitNetworkSession* session, std::shared_ptr<downloads::DownloadList> list);
std::shared_ptr<downloads::DownloadList> downloadListOf(WebKitNetworkSession* session);

/// The address that it was asked for at; empty if that is not known.
std::string addressOf(WebKitDownload* download);

/// What the file would be called: from the end of its address.
std::string fileNameIn(WebKitDownload* download);

} // namespace kelo::webkit
