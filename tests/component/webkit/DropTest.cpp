#include "component/webkit/MainWindowFixture.h"

#include <fstream>

namespace kelo::test {

/// A page with a drop zone, and a second window to drag from.
class Drop : public MainWindowFixture {
protected:
    static constexpr const char* page = R"(<body style='margin: 0'>
        <div id=zone style='height: 80px; background: #cce'><p id=inner>zone</p></div>
        <input id=own type=file multiple style='height: 60px; width: 100%'>
        <div id=plain style='height: 60px'>no zone</div><script>
        heard = []; left = '';
        for (const type of ['dragenter', 'dragover', 'drop'])
          zone.addEventListener(type, (event) => event.preventDefault());
        zone.ondragenter = (event) => { left += '+'; kinds = [...event.dataTransfer.types].join(); };
        zone.ondragleave = () => left += '-';
        zone.ondrop = async (event) => {
          const {files, types} = event.dataTransfer;
          const text = event.dataTransfer.getData('text/plain');
          const where = event.target.id + ' ' + (event.clientY < 80);
          const read = await Promise.all([...files].map(async (file) => file.name + ' ' + file.size +
              ' ' + await file.text()));
          heard.push([where, text, ...read].join('|'));
        };
        own.onchange = () => heard.push([...own.files].map((file) => file.name).join());
        </script>)";

    void SetUp() override {
        openInMainWindow({{"/", page}});
        for (const char* const name : {"one.txt", "two.txt"}) {
            std::ofstream(folder / name) << "content of " << name;
            addresses += "file://" + (folder / name).string() + "\r\n";
        }
        gtk_window_set_title(GTK_WINDOW(source), "source");
        gtk_window_set_default_size(GTK_WINDOW(source), 120, 120);
        gtk_window_set_child(GTK_WINDOW(source), handle);
        drags = gtk_drag_source_new();
        gtk_drag_source_set_actions(drags, GDK_ACTION_COPY);
        g_signal_connect_swapped(drags, "drag-begin",
                                 G_CALLBACK(+[](Drop* self) { ++self->begun; }), this);
        g_signal_connect_swapped(drags, "drag-end", G_CALLBACK(+[](Drop* self) { ++self->ended; }),
                                 this);
        gtk_widget_add_controller(handle, GTK_EVENT_CONTROLLER(drags));
        gtk_window_present(GTK_WINDOW(source));
        ASSERT_TRUE(loop.runUntil([this] { return gtk_window_is_active(GTK_WINDOW(source)); }));
    }
    ~Drop() override { gtk_window_destroy(GTK_WINDOW(source)); }

    void offer(const char* type, const std::string& data) {
        GBytes* const bytes = g_bytes_new(data.data(), data.size());
        GdkContentProvider* const content = gdk_content_provider_new_for_bytes(type, bytes);
        gtk_drag_source_set_content(drags, content);
        g_object_unref(content);
        g_bytes_unref(bytes);
    }
    bool beginDrag() {
        const int before = begun;
        int step = 0;
        // A window manager may still be moving the window: then the press goes beside it.
        const bool isDragged = loop.runUntil([&] {
            const auto start = onScreen(handle, 20, 20);
            if (step % 60 == 0) {
                pointer.up(1);
                pointer.moveTo(start);
                settle();
                pointer.down(1);
            }
            pointer.moveTo({start.x + ++step % 60, start.y});
            settle(); // the toolkit hands on a motion only when it draws
            return begun > before;
        });
        EXPECT_TRUE(isDragged);
        return isDragged;
    }
    /// Moves to the element and on it, until the condition holds: the pointer of a person never
    /// rests.
    bool dragTo(const std::string& selector, const std::function<bool()>& condition) {
        const auto place = placeOf(selector);
        int step = 0;
        return loop.runUntil([&] {
            pointer.moveTo({place.x + ++step % 7, place.y});
            settle();
            return condition();
        });
    }
    bool dragTo(const std::string& selector, const std::string& script) {
        return dragTo(selector, [&] { return evaluate(script) == "true"; });
    }
    void letGo() {
        pointer.up(1);
        ASSERT_TRUE(loop.runUntil([this] { return ended == begun; }));
    }
    bool waitToHear(const std::string& heard) {
        const bool came = waitForScript("heard.join('; ')", heard);
        EXPECT_TRUE(came) << evaluate("heard.join('; ')");
        return came;
    }

    std::string addresses;
    GtkWidget* const source = gtk_window_new();
    GtkWidget* const handle = gtk_label_new("drag me");
    GtkDragSource* drags = nullptr;
    int begun = 0;
    int ended = 0;
};

constexpr const char* knowsOfFiles = "left.length > 0 && kinds === 'Files'";

TEST_F(Drop, FilesReachTheDropZone) {
    offer("text/uri-list", addresses);
    ASSERT_TRUE(beginDrag());
    ASSERT_TRUE(dragTo("#zone", knowsOfFiles));
    letGo();
    EXPECT_TRUE(
        waitToHear("zone true||one.txt 18 content of one.txt|two.txt 18 content of two.txt"));
    EXPECT_EQ(evaluate("document.querySelectorAll('input').length"), "1");
}

TEST_F(Drop, FilesReachTheDropZoneASecondTime) {
    offer("text/uri-list", addresses);
    const std::string once =
        "zone true||one.txt 18 content of one.txt|two.txt 18 content of two.txt";
    for (const std::string& heard : {once, once + "; " + once}) {
        evaluate("left = ''; 1");
        ASSERT_TRUE(beginDrag());
        ASSERT_TRUE(dragTo("#zone", knowsOfFiles));
        letGo();
        ASSERT_TRUE(waitToHear(heard));
    }
}

TEST_F(Drop, FilesThatLeaveTheZoneAreLeftByIt) {
    offer("text/uri-list", addresses);
    ASSERT_TRUE(beginDrag());
    ASSERT_TRUE(dragTo("#zone", knowsOfFiles));
    // As many as there were.
    EXPECT_TRUE(dragTo("#plain", "left.split('+').length === left.split('-').length"));
    letGo();
    EXPECT_EQ(evaluate("heard.join()"), "");
    EXPECT_EQ(view->url()->path(), "/");
}

TEST_F(Drop, FilesReachAnInputOfThePageByTheEnginesOwnWay) {
    offer("text/uri-list", addresses);
    ASSERT_TRUE(beginDrag());
    ASSERT_TRUE(dragTo("#zone", knowsOfFiles));
    ASSERT_TRUE(dragTo("#own", "left.split('+').length === left.split('-').length"));
    letGo();
    EXPECT_TRUE(waitToHear("one.txt,two.txt"));
}

TEST_F(Drop, FilesReachADropZoneInAModalDialog) {
    evaluate("const dialog = document.createElement('dialog'); document.body.append(dialog);"
             "dialog.append(zone); dialog.showModal(); 1");
    offer("text/uri-list", addresses);
    ASSERT_TRUE(beginDrag());
    ASSERT_TRUE(dragTo("#zone", knowsOfFiles));
    letGo();
    EXPECT_TRUE(waitForScript("heard.join().includes('|two.txt 18 content of two.txt')", "true"));
}

TEST_F(Drop, TextIsUntouched) {
    offer("text/plain;charset=utf-8", "words");
    ASSERT_TRUE(beginDrag());
    ASSERT_TRUE(dragTo("#zone", "left.length > 0"));
    EXPECT_EQ(evaluate("document.querySelectorAll('input').length"), "1");
    letGo();
    EXPECT_TRUE(waitToHear("zone true|words"));
}

TEST_F(Drop, AddressesOfPagesAreUntouched) {
    offer("text/uri-list", "https://example.org/\r\n");
    ASSERT_TRUE(beginDrag());
    ASSERT_TRUE(dragTo("#zone", "left.length > 0"));
    settle();
    EXPECT_EQ(evaluate("document.querySelectorAll('input').length"), "1");
    EXPECT_EQ(evaluate("kinds.includes('Files')"), "false");
    letGo();
    EXPECT_TRUE(waitToHear("zone true|https://example.org/"));
}

TEST_F(Drop, PageOfAnotherSiteGetsNoFiles) {
    const auto other = site({{"/", page}});
    open(other->url("/"));
    offer("text/uri-list", addresses);
    ASSERT_TRUE(beginDrag());
    ASSERT_TRUE(dragTo("#zone", "left.length > 0"));
    settle();
    EXPECT_EQ(evaluate("document.querySelectorAll('input').length"), "1");
    letGo();
    EXPECT_TRUE(waitForScript("heard.length", "1"));
    EXPECT_EQ(evaluate("heard.join().includes('.txt 18')"), "false");
}

} // namespace kelo::test
