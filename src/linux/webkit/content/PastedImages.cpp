#include "linux/webkit/content/PastedImages.h"

#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/content/DocumentStartScript.h"

#include <memory>
#include <string_view>

namespace kelo::webkit {

namespace {

// A page must learn at once whether the paste is its own, but reading the clipboard takes time. So
// the program says beforehand what the clipboard holds, in a variable of the main frame.
constexpr const char* pastingScript = R"((() => {
  const type = 'image/png';
  const holdsImage = () => {
    try {
      return top.clipboardHoldsImage === true;
    } catch {
      return false;  // the service in a frame of another site
    }
  };
  const imageIn = async (items) => {
    for (const item of items)
      if (item.types.includes(type)) return new File([await item.getType(type)], 'image.png', {type});
    return null;
  };
  const paste = (target, html, image) => {
    const clipboardData = new DataTransfer();
    if (html) clipboardData.setData('text/html', html);
    if (image) clipboardData.items.add(image);
    const event = new ClipboardEvent('paste', {bubbles: true, cancelable: true, composed: true,
                                               clipboardData});
    if (target.dispatchEvent(event) && image && target.isContentEditable)
      document.execCommand('insertImage', false, URL.createObjectURL(image));
  };
  addEventListener('paste', (event) => {
    if (!event.isTrusted || !holdsImage()) return;
    const [node] = event.composedPath();
    const html = event.clipboardData.getData('text/html');
    event.stopImmediatePropagation();
    event.preventDefault();
    navigator.clipboard.read().then(imageIn).catch(() => null).then(
        (image) => paste(node instanceof Element ? node : node.parentElement, html, image));
  }, true);
})())";

// The engine reads no other images. Programs that copy one offer it as PNG, too.
bool holdsImageWithoutText(GdkClipboard* clipboard) {
    GdkContentFormats* const formats = gdk_clipboard_get_formats(clipboard);
    if (gdk_content_formats_contain_gtype(formats, G_TYPE_STRING))
        return false;
    gsize count = 0;
    const char* const* const types = gdk_content_formats_get_mime_types(formats, &count);
    bool hasImage = false;
    for (gsize index = 0; index < count; ++index) {
        const std::string_view type = types[index];
        // A list of addresses stands for files, whose picture is only a preview.
        if (type.starts_with("text/plain") || type == "text/uri-list")
            return false;
        hasImage = hasImage || type == "image/png";
    }
    return hasImage;
}

/// Tells the view's page about the clipboard. The view owns it.
class ClipboardReport {
public:
    explicit ClipboardReport(WebKitWebView* view)
        : view(view),
          changed(gobject::connectSignal(
              gtk_widget_get_clipboard(GTK_WIDGET(view)), "changed",
              +[](GdkClipboard*, ClipboardReport* self) { self->send(); }, this)) {
        g_signal_connect(view, "load-changed", G_CALLBACK(loadChanged), this);
    }

private:
    // A new document knows nothing of what was said before.
    static void loadChanged(WebKitWebView*, WebKitLoadEvent event, ClipboardReport* self) {
        if (event == WEBKIT_LOAD_COMMITTED)
            self->send();
    }

    void send() const {
        const bool holdsImage = holdsImageWithoutText(gtk_widget_get_clipboard(GTK_WIDGET(view)));
        webkit_web_view_evaluate_javascript(view,
                                            holdsImage ? "globalThis.clipboardHoldsImage = true"
                                                       : "globalThis.clipboardHoldsImage = false",
                                            -1, ownScriptWorld, nullptr, nullptr, nullptr, nullptr);
    }

    WebKitWebView* view;
    gobject::SignalConnection changed;
};

} // namespace

void offerPastedImages(WebKitWebView* view, const Url& service) {
    DocumentStartScript script{.source = onlyIn(service, pastingScript)};
    script.world = ownScriptWorld;
    script.allowed = {pagesOfHost(service)};
    addDocumentStartScript(webkit_web_view_get_user_content_manager(view), script);
    auto report = std::make_unique<ClipboardReport>(view);
    g_object_set_data_full(G_OBJECT(view), "kelo-clipboard", report.release(), [](gpointer data) {
        std::unique_ptr<ClipboardReport>(static_cast<ClipboardReport*>(data));
    });
}

} // namespace kelo::webkit
