#include "component/webkit/MainWindowFixture.h"

namespace kelo::test {

/// A page with a paste handler, in a window, and a clipboard of the test's own.
class Paste : public MainWindowFixture {
protected:
    static constexpr const char* page =
        R"(<textarea id=field></textarea><div id=rich contenteditable>x</div><script>
        heard = []; took = false;
        onpaste = async (event) => {
          const data = event.clipboardData;
          const files = [...data.files];
          const line = [...data.types].join() + '|' + data.getData('text/plain') + '|';
          if (took) event.preventDefault();
          const read = await Promise.all(files.map(async (file) => file.name + ' ' + file.type +
              ' ' + new Uint8Array(await file.arrayBuffer()).join()));
          heard.push(line + read);
        };
        </script>)";

    void SetUp() override { openInMainWindow({{"/", page}, {"/again", page}}); }
    void TearDown() override { gdk_clipboard_set_content(clipboard(), nullptr); }

    GdkClipboard* clipboard() const { return gtk_widget_get_clipboard(GTK_WIDGET(native())); }
    using Contents = std::map<std::string, std::string>;
    void copy(const Contents& contents) {
        std::vector<GdkContentProvider*> parts;
        for (const auto& [type, bytes] : contents) {
            GBytes* const data = g_bytes_new(bytes.data(), bytes.size());
            parts.push_back(gdk_content_provider_new_for_bytes(type.c_str(), data));
            g_bytes_unref(data);
        }
        GdkContentProvider* const all = gdk_content_provider_new_union(parts.data(), parts.size());
        ASSERT_TRUE(gdk_clipboard_set_content(clipboard(), all));
        g_object_unref(all);
        settle();
    }
    void pasteInto(const std::string& id) {
        gtk_widget_grab_focus(GTK_WIDGET(native()));
        evaluate("heard = []; " + id + ".focus(); " + id + ".select?.(); 1");
        press("v", {"Control_L"});
    }
    bool waitForPaste(const std::string& heard) {
        const bool came = waitForScript("heard.join('; ')", heard);
        EXPECT_TRUE(came) << evaluate("heard.join('; ')");
        return came;
    }

    // All that matters is that they arrive as they are.
    const std::string image = "\x89PNG and so on";
    const std::string imageBytes = "137,80,78,71,32,97,110,100,32,115,111,32,111,110";
};

TEST_F(Paste, ImageReachesThePageAsAFile) {
    copy({{"image/png", image}});
    pasteInto("field");
    EXPECT_TRUE(waitForPaste("Files||image.png image/png " + imageBytes));
}

TEST_F(Paste, ImageCopiedFromABrowserReachesThePageWithItsMarkup) {
    copy({{"image/png", image}, {"text/html", "<img src='https://example.org/a.png'>"}});
    pasteInto("field");
    EXPECT_TRUE(waitForPaste("Files,text/html||image.png image/png " + imageBytes));
}

TEST_F(Paste, ImageStillReachesAnotherPageOfTheService) {
    copy({{"image/png", image}});
    open(server->url("/again"));
    pasteInto("field");
    EXPECT_TRUE(waitForPaste("Files||image.png image/png " + imageBytes));
}

TEST_F(Paste, ImageIsInsertedUnlessThePageTakesIt) {
    copy({{"image/png", image}});
    pasteInto("rich");
    EXPECT_TRUE(waitForScript("rich.querySelectorAll('img[src^=\"blob:\"]').length", "1"));
    evaluate("took = true; rich.textContent = 'x'; 1");
    pasteInto("rich");
    EXPECT_TRUE(waitForPaste("Files||image.png image/png " + imageBytes));
    EXPECT_EQ(evaluate("rich.innerHTML"), "x");
}

TEST_F(Paste, TextIsUntouched) {
    gdk_clipboard_set_text(clipboard(), "words");
    pasteInto("field");
    EXPECT_TRUE(waitForPaste("text/plain|words|"));
    EXPECT_EQ(evaluate("field.value"), "words");
}

TEST_F(Paste, TextWithAPictureOfItIsPastedAsText) {
    copy({{"image/png", image}});
    copy({{"image/png", image}, {"text/plain;charset=utf-8", "words"}});
    pasteInto("field");
    EXPECT_TRUE(waitForScript("field.value", "words"));
    EXPECT_EQ(evaluate("heard.join()"), "||"); // what the engine says by itself
}

TEST_F(Paste, PageCannotMakeTheProgramReadTheClipboard) {
    copy({{"image/png", image}});
    evaluate("heard = []; globalThis.clipboardHoldsImage = true;"
             "field.dispatchEvent(new ClipboardEvent('paste', {bubbles: true,"
             "clipboardData: new DataTransfer()})); 1");
    EXPECT_TRUE(waitForPaste("||"));
    settle();
    EXPECT_EQ(evaluate("heard.length"), "1");
    EXPECT_EQ(evaluate("typeof filesAreDragged"), "undefined");
}

TEST_F(Paste, PageOfAnotherSiteGetsWhatTheEngineGives) {
    const auto other = site({{"/", page}});
    copy({{"image/png", image}});
    open(other->url("/"));
    pasteInto("field");
    EXPECT_TRUE(waitForPaste("||"));
}

} // namespace kelo::test
