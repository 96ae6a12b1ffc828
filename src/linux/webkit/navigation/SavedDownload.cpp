#include "linux/webkit/navigation/SavedDownload.h"

#include "base/Translation.h"
#include "linux/downloads/DownloadFolder.h"
#include "linux/downloads/FileName.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace kelo::webkit {

namespace {

constexpr const char* listKey = "kelo-download-list";
constexpr guint firstFailureStatus = 400;
constexpr std::size_t longestName = 255;

bool isPlain(WebKitURIResponse* response) {
    const char* const address = response ? webkit_uri_response_get_uri(response) : nullptr;
    const char* const scheme = address ? g_uri_peek_scheme(address) : nullptr;
    return scheme && std::string_view(scheme) == "http";
}

/// Why a file could not be written, for the user.
std::string sentenceFor(int reason) {
    switch (reason) {
    case ENOSPC:
    case EDQUOT:
        return translated("The disk is full. Make room on it, and download the file again.");
    case EACCES:
    case EPERM:
    case EROFS:
    case ENOTDIR: // the folder is a link to a disk that is not there
        return translated("The downloads folder cannot be written to. Change its permissions, or "
                          "choose another one in the settings of your desktop.");
    default:
        return translated("The file could not be saved. Download it again.");
    }
}

std::string lostConnection() {
    return translated("The connection was lost. Download the file again.");
}

// The engine passes on the system's reason as a text alone, and in English: its processes do not
// follow the user's language. By then it has removed the file, so a full disk is full no more.
int reasonIn(std::string_view message) {
    for (const int reason : {ENOSPC, EDQUOT, EACCES, EPERM, EROFS})
        if (message.find(strerrordesc_np(reason)) != std::string_view::npos ||
            message.find(g_strerror(reason)) != std::string_view::npos)
            return reason;
    return 0;
}

std::string sentenceFor(const GError& error) {
    if (!g_error_matches(&error, WEBKIT_DOWNLOAD_ERROR, WEBKIT_DOWNLOAD_ERROR_DESTINATION))
        return lostConnection();
    return sentenceFor(reasonIn(error.message));
}

/// A download that runs; owned by the engine's.
class SavedDownload {
public:
    SavedDownload(WebKitDownload* download, std::shared_ptr<downloads::DownloadList> list)
        : download(download), list(std::move(list)) {}
    ~SavedDownload() {
        // The engine may have given it up without a word.
        if (identifier)
            list->fail(*identifier, lostConnection());
    }
    SavedDownload(const SavedDownload&) = delete;
    SavedDownload& operator=(const SavedDownload&) = delete;

    void connectAll() {
        const auto connect = [this](const char* signal, auto* handler) {
            g_signal_connect(download, signal, reinterpret_cast<GCallback>(handler), this);
        };
        connect(
            "decide-destination",
            +[](WebKitDownload*, const char* suggestion, SavedDownload* self) -> gboolean {
                self->decideDestination(suggestion ? suggestion : "");
                return TRUE;
            });
        connect(
            "received-data", +[](WebKitDownload*, guint64, SavedDownload* self) { self->tell(); });
        connect(
            "failed",
            +[](WebKitDownload*, GError* error, SavedDownload* self) { self->failed(*error); });
        connect(
            "finished", +[](WebKitDownload*, SavedDownload* self) { self->finished(); });
    }

private:
    void decideDestination(const std::string& suggestion) {
        std::string sentence = refusal();
        if (sentence.empty()) {
            try {
                begin(suggestion);
                return;
            } catch (const std::system_error& error) {
                g_warning("A download could not begin: %s", error.what());
                sentence = sentenceFor(error.code().value());
            }
        }
        webkit_download_cancel(download);
        list->refuse(downloads::numbered(downloads::safeFileName(suggestion), 1, longestName),
                     sentence);
    }

    void begin(const std::string& suggestion) {
        place = downloads::DownloadFolder(downloads::userDownloadsFolder()).makePlace(suggestion);
        identifier = list->begin(place->name(), [this] { stop(); });
        webkit_download_set_destination(download, place->growingPath().c_str());
    }

    /// Why the reply is not saved; empty if it is.
    std::string refusal() const {
        WebKitURIResponse* const response = webkit_download_get_response(download);
        // A redirect may have led there.
        if (isPlain(response))
            return translated("It would have come without encryption, so it was not saved. Ask "
                              "those who run the service.");
        if (!response || webkit_uri_response_get_status_code(response) < firstFailureStatus)
            return "";
        g_warning("A download was answered with the status %u",
                  webkit_uri_response_get_status_code(response));
        return translated("The service did not give the file. Try again later.");
    }

    // Afterwards the engine reports a failure. Until then, it may still be busy in the folder,
    // which goes at once if it can: the program may be about to end.
    void stop() {
        isStopped = true;
        webkit_download_cancel(download);
        place->discard();
    }

    void tell() const {
        if (!identifier)
            return;
        WebKitURIResponse* const response = webkit_download_get_response(download);
        const guint64 length = response ? webkit_uri_response_get_content_length(response) : 0;
        list->progress(*identifier, webkit_download_get_received_data_length(download),
                       length > 0 ? std::optional<std::uint64_t>(length) : std::nullopt);
    }

    void failed(const GError& error) {
        hasFailed = true;
        const bool isCancelled =
            g_error_matches(&error, WEBKIT_DOWNLOAD_ERROR, WEBKIT_DOWNLOAD_ERROR_CANCELLED_BY_USER);
        if (!isCancelled)
            g_warning("A download failed: %s", error.message);
        // It is not known under which name the service would have sent it.
        if (!identifier && !isCancelled)
            list->refuse(fileNameIn(download), sentenceFor(error));
        if (identifier && !isCancelled)
            list->fail(*identifier, sentenceFor(error));
        place.reset();
    }

    // The engine emits it after a failure as well.
    void finished() {
        // The whole file may have come before the engine heard of it.
        if (isStopped)
            place.reset();
        if (hasFailed || !place)
            return;
        try {
            list->finish(*identifier, place->complete());
        } catch (const std::system_error& error) {
            g_warning("A download could not be completed: %s", error.what());
            list->fail(*identifier, sentenceFor(error.code().value()));
        }
        place.reset();
    }

    WebKitDownload* download;
    std::shared_ptr<downloads::DownloadList> list;
    std::optional<unsigned> identifier; ///< once the name is known
    std::unique_ptr<downloads::DownloadPlace> place;
    bool isStopped = false; ///< by the user
    bool hasFailed = false;
};

template <typename T>
void destroy(gpointer data) {
    std::unique_ptr<T>(static_cast<T*>(data));
}

} // namespace

void saveDownload(WebKitDownload* download, std::shared_ptr<downloads::DownloadList> list) {
    auto saved = std::make_unique<SavedDownload>(download, std::move(list));
    saved->connectAll();
    g_object_set_data_full(G_OBJECT(download), "kelo-saved", saved.release(),
                           destroy<SavedDownload>);
}

void setDownloadList(WebKitNetworkSession* session, std::shared_ptr<downloads::DownloadList> list) {
    using Shared = std::shared_ptr<downloads::DownloadList>;
    g_object_set_data_full(G_OBJECT(session), listKey,
                           std::make_unique<Shared>(std::move(list)).release(), destroy<Shared>);
}

std::shared_ptr<downloads::DownloadList> downloadListOf(WebKitNetworkSession* session) {
    return *static_cast<std::shared_ptr<downloads::DownloadList>*>(
        g_object_get_data(G_OBJECT(session), listKey));
}

std::string addressOf(WebKitDownload* download) {
    WebKitURIRequest* const request = webkit_download_get_request(download);
    const char* const address = request ? webkit_uri_request_get_uri(request) : nullptr;
    return address ? address : "";
}

std::string fileNameIn(WebKitDownload* download) {
    const gobject::GUriPointer address(
        g_uri_parse(addressOf(download).c_str(), G_URI_FLAGS_NONE, nullptr));
    const std::string path = address ? g_uri_get_path(address.get()) : "";
    return downloads::numbered(downloads::safeFileName(path.substr(path.rfind('/') + 1)), 1,
                               longestName);
}

} // namespace kelo::webkit
