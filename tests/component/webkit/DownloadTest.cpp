#include "component/webkit/ManualTimers.h"
#include "component/webkit/PlainListener.h"
#include "component/webkit/WindowFixture.h"

#include "linux/webkit/navigation/Downloads.h"
#include "testing/screen/Pointer.h"

#include <gmock/gmock.h>

#include <fstream>
#include <set>

namespace kelo::test {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Counts what the engine asks about replies, before anybody answers it.
class ReplyDecisions {
public:
    ReplyDecisions()
        : signal(g_signal_lookup("decide-policy", WEBKIT_TYPE_WEB_VIEW)),
          hook(g_signal_add_emission_hook(
              signal, 0,
              [](GSignalInvocationHint*, guint, const GValue* values, gpointer self) -> gboolean {
                  if (g_value_get_enum(values + 2) == WEBKIT_POLICY_DECISION_TYPE_RESPONSE)
                      ++static_cast<ReplyDecisions*>(self)->count;
                  return TRUE;
              },
              this, nullptr)) {}
    ~ReplyDecisions() { g_signal_remove_emission_hook(signal, hook); }
    ReplyDecisions(const ReplyDecisions&) = delete;
    ReplyDecisions& operator=(const ReplyDecisions&) = delete;

    int count = 0;

private:
    guint signal;
    gulong hook;
};

/// A service and another site, both with files.
class Download : public WindowFixture {
protected:
    Download() : saved(std::filesystem::path(g_get_home_dir()) / "Downloads") {}

    void SetUp() override {
        other = std::make_unique<MisbehavingServer>(identity,
                                                    MisbehavingServer::answering(answerOther));
        service = std::make_unique<MisbehavingServer>(
            identity, MisbehavingServer::answering([this](const WireRequest& request) {
                if (request.target == "/to-plain")
                    return httpReply("", "Location: " + plain.address() + "\r\n", "302 Found");
                if (request.target == "/to-other")
                    return httpReply("", "Location: " + other->origin() + "/file-far\r\n",
                                     "302 Found");
                // Lost on its way at first.
                if (request.target == "/file-late" && !std::exchange(wasLoaded, true))
                    return std::string("HTTP/0.0 nonsense\r\n\r\n");
                // A page at first, and a file when it is loaded again.
                if (request.target == "/twice" && !std::exchange(wasLoaded, true))
                    return page("<script>onload = () => location.reload()</script>");
                if (request.target == "/twice")
                    return answerOther({"GET", "/file", {}, ""});
                return request.target == "/" ? page(html) : answerOther(request);
            }));
        makeView(service->url());
        connection = gobject::connectSignal(
            session->networkSession(platform::WebsiteDataStore::persistentDefault).get(),
            "download-started",
            +[](WebKitNetworkSession*, WebKitDownload* download, Download* self) {
                ++self->started;
                g_signal_connect(download, "finished",
                                 G_CALLBACK(+[](WebKitDownload*, int* count) { ++*count; }),
                                 &self->finished);
            },
            this);
    }
    void TearDown() override {
        connection = {};
        endSession();
        std::filesystem::remove_all(saved);
    }

    static std::string answerOther(const WireRequest& request) {
        const std::string link = "<style>* { margin: 0 } a { position: fixed; inset: 0 }</style>"
                                 "<a download='far.txt' href='/file'>get</a>";
        if (request.target == "/link")
            return page(link);
        if (request.target == "/blob")
            return page(link + "<script>document.links[0].href = "
                               "URL.createObjectURL(new Blob(['contents']))</script>");
        if (!request.target.starts_with("/file"))
            return page("<title>other</title>");
        return httpReply("contents", "Content-Type: text/plain\r\nContent-Disposition: attachment; "
                                     "filename=\"../" +
                                         request.target.substr(1) + " x.txt\"\r\n");
    }
    void show(const std::string& shown) {
        html = shown;
        open(service->url("/"));
    }
    void click() { evaluate("document.querySelector('a').click(); 1"); }
    /// Waits until so many downloads have ended, one way or the other.
    bool waitForEnd(int count) {
        return loop.runUntil([&] { return started == count && finished == count; });
    }
    /// Shows a link and chooses in its menu to save what it leads to.
    void chooseToSave(const std::string& target) {
        showInWindow();
        show("<style>a { position: fixed; inset: 0 }</style><a href='" + target + "'>get</a>");
        gobject::GObjectPointer<GAction> save;
        const auto menu = gobject::connectSignal(
            native(), "context-menu",
            +[](WebKitWebView*, WebKitContextMenu* shown, WebKitHitTestResult*,
                gobject::GObjectPointer<GAction>* found) -> gboolean {
                for (GList* item = webkit_context_menu_get_items(shown); item; item = item->next)
                    if (webkit_context_menu_item_get_stock_action(WEBKIT_CONTEXT_MENU_ITEM(
                            item->data)) == WEBKIT_CONTEXT_MENU_ACTION_CUSTOM)
                        *found = gobject::GObjectPointer<GAction>::share(
                            webkit_context_menu_item_get_gaction(
                                WEBKIT_CONTEXT_MENU_ITEM(item->data)));
                return FALSE;
            },
            &save);
        const screen::XConnection display;
        screen::Pointer(display).click({200, 150}, 3);
        ASSERT_TRUE(loop.runUntil([&] { return save.get() != nullptr; }));
        g_action_activate(save.get(), nullptr);
    }
    std::set<std::string> files() const {
        std::set<std::string> found;
        if (std::filesystem::exists(saved))
            for (const auto& entry : std::filesystem::directory_iterator(saved))
                if (entry.is_regular_file() && entry.file_size() == 8)
                    found.insert(entry.path().filename().string());
        return found;
    }

    const std::filesystem::path saved;
    std::string html;
    bool wasLoaded = false;
    PlainListener plain;
    std::unique_ptr<MisbehavingServer> other;
    std::unique_ptr<MisbehavingServer> service;
    gobject::SignalConnection connection;
    int started = 0;
    int finished = 0;
};

TEST_F(Download, OfALinkGoesToAFolderThatIsMadeAndLeavesThePage) {
    ASSERT_FALSE(std::filesystem::exists(saved));
    show("<a href='/file'>get</a>");
    click();
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_THAT(files(), ElementsAre("file x.txt"));
    EXPECT_EQ(recorder->finished.size(), 1u);
    EXPECT_EQ(pageText(), "get");
}

TEST_F(Download, OfARedirectToAnotherHostIsSaved) {
    show("<a href='/to-other'>get</a>");
    click();
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_THAT(files(), ElementsAre("file-far x.txt"));
}

TEST_F(Download, ThatAPageMakesItselfIsSaved) {
    show("<a download='made.txt'>get</a><script>document.querySelector('a').href = "
         "URL.createObjectURL(new Blob(['contents']))</script>");
    click();
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_THAT(files(), ElementsAre("made.txt"));
}

TEST_F(Download, OfALinkToANewWindowIsSaved) {
    for (const char* target : {"/file", "/to-other"}) {
        SCOPED_TRACE(target);
        started = finished = 0;
        makeView(service->url());
        show(std::string("<a target='_blank' href='") + target + "'>get</a>");
        click();
        EXPECT_TRUE(waitForEnd(1));
    }
    EXPECT_THAT(files(), UnorderedElementsAre("file x.txt", "file-far x.txt"));
}

TEST_F(Download, ThatIsTriedAgainIsSaved) {
    show("<a href='/file-late'>get</a>");
    click();
    ASSERT_TRUE(waitForScript("document.querySelector('a')?.innerText", "Try again"));
    click();
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_THAT(files(), ElementsAre("file-late x.txt"));
}

TEST_F(Download, OfAHiddenFrameIsSavedWhenTheUserAskedForIt) {
    show("<iframe></iframe>");
    evaluate("document.querySelector('iframe').src = '/file'; 1");
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_THAT(files(), ElementsAre("file x.txt"));
}

TEST_F(Download, ThatNobodyAskedForIsNotSaved) {
    for (const char* script : {"location = '/file'", "frames[0].location = '/file'",
                               "document.querySelector('a').click()"}) {
        SCOPED_TRACE(script);
        started = finished = 0;
        html = std::string("<a download href='/file'>get</a><iframe></iframe><script>") + script +
               "</script>";
        load(service->url("/"));
        EXPECT_TRUE(waitForEnd(1));
        EXPECT_THAT(files(), IsEmpty());
    }
}

TEST_F(Download, ThatTakesThePlaceOfAPageIsNotSaved) {
    show("<a href='/twice'>get</a>");
    click();
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Download, IsOneForEachGesture) {
    show("");
    evaluate("for (const name of ['/file1', '/file2', '/file3'])"
             "  document.body.append(Object.assign(document.createElement('iframe'), {src: name}));"
             "1");
    ASSERT_TRUE(waitForEnd(3));
    EXPECT_EQ(files().size(), 1u);
}

TEST_F(Download, FollowsAnotherOnceThereIsAnotherGesture) {
    showInWindow();
    show("<a download href='/file1'></a><a download href='/file2'></a><script>clicks = 0;"
         "onmousedown = () => ++clicks</script>");
    evaluate("document.links[0].click(); 1");
    ASSERT_TRUE(waitForEnd(1));
    evaluate("document.links[1].click(); 1");
    ASSERT_TRUE(waitForEnd(2));
    EXPECT_THAT(files(), ElementsAre("file1 x.txt"));
    const screen::XConnection display;
    screen::Pointer(display).click({200, 150});
    ASSERT_TRUE(waitForScript("clicks", "1"));
    evaluate("document.links[1].click(); 1");
    ASSERT_TRUE(waitForEnd(3));
    EXPECT_THAT(files(), UnorderedElementsAre("file1 x.txt", "file2 x.txt"));
}

TEST_F(Download, FollowsAnotherOnceTheEngineHasForgottenTheGesture) {
    ManualTimers timers;
    const MainLoop::Installation installation{timers};
    show("<a download href='/file1'></a><a download href='/file2'></a>");
    evaluate("document.links[0].click(); 1");
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_EQ(timers.delays.back(), std::chrono::seconds(10));
    timers.fire();
    evaluate("document.links[1].click(); 1");
    ASSERT_TRUE(waitForEnd(2));
    EXPECT_THAT(files(), UnorderedElementsAre("file1 x.txt", "file2 x.txt"));
}

TEST_F(Download, OfAForeignPageIsNotSaved) {
    show("");
    open(other->url("/"));
    evaluate("location = '/file'; 1");
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Download, OfAForeignFrameIsNotEvenStarted) {
    show("<iframe></iframe>");
    const ReplyDecisions decisions;
    evaluate("document.querySelector('iframe').src = '" + other->origin() + "/file'; 1");
    // What becomes of the reply is decided in the same turn of the loop.
    ASSERT_TRUE(loop.runUntil([&] { return decisions.count > 0; }));
    open(service->url("/next"));
    EXPECT_EQ(started, 0);
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Download, OfALinkInAForeignFrameIsNotSaved) {
    for (const char* name : {"/link", "/blob"}) {
        SCOPED_TRACE(name);
        started = finished = 0;
        showInWindow();
        show("<style>* { margin: 0; width: 100%; height: 100% }</style><iframe src='" +
             other->origin() + name + "'></iframe>");
        const screen::XConnection display;
        screen::Pointer(display).click({200, 150});
        EXPECT_TRUE(waitForEnd(1));
        EXPECT_THAT(files(), IsEmpty());
    }
}

TEST_F(Download, ChosenInTheContextMenuIsSaved) {
    chooseToSave("/file");
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_THAT(files(), ElementsAre("file x.txt"));
}

TEST_F(Download, OfNoViewIsNotSaved) {
    show(""); // the host's certificate is known from now on
    const auto started =
        gobject::GObjectPointer<WebKitDownload>::adopt(webkit_network_session_download_uri(
            session->networkSession(platform::WebsiteDataStore::persistentDefault).get(),
            service->url("/file").absoluteString().c_str()));
    EXPECT_TRUE(waitForEnd(1));
    EXPECT_EQ(webkit_download_get_destination(started.get()), nullptr);
}

TEST_F(Download, GoesToTheFolderThatTheUserHasChosen) {
    const std::filesystem::path settings =
        std::filesystem::path(g_get_user_config_dir()) / "user-dirs.dirs";
    std::filesystem::create_directories(settings.parent_path());
    const auto choose = [&settings](const std::string& folder) {
        std::ofstream(settings) << "XDG_DOWNLOAD_DIR=\"$HOME/" << folder << "\"\n";
        g_reload_user_special_dirs_cache();
    };
    choose("Downloads/chosen");
    show("<a href='/file'>get</a>");
    click();
    EXPECT_TRUE(waitForEnd(1));
    choose("Downloads"); // the library does not forget a choice
    EXPECT_TRUE(std::filesystem::exists(saved / "chosen" / "file x.txt"));
}

TEST_F(Download, WithoutEncryptionIsNotSaved) {
    show("<a download href='/to-plain'></a>");
    click();
    ASSERT_TRUE(waitForEnd(1));
    chooseToSave("/to-plain");
    ASSERT_TRUE(waitForEnd(2));
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Download, OfAnotherViewIsLeftToThatView) {
    show("<a href='/file'></a>");
    webkit::WebKitEmbeddedView second(*session, {}, {});
    click();
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_THAT(files(), ElementsAre("file x.txt"));
}

} // namespace kelo::test
