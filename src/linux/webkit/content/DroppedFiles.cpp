#include "linux/webkit/content/DroppedFiles.h"

#include "base/async/Spawn.h"
#include "base/async/Task.h"
#include "linux/gobject/AsyncResult.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/webkit/content/DocumentStartScript.h"

namespace kelo::webkit {

namespace {

// The input is no part of a shadow tree, because the engine gives no files to one that is. It lies
// in the top layer, and in the modal dialog if there is one: nothing outside of that can be hit.
constexpr const char* droppingScript = R"((() => {
  let cover = null, below = null, depth = 0, dropped = null, entered = null;

  const find = ({clientX, clientY}) => {
    let root = document, target = null, x = clientX, y = clientY;
    for (;;) {
      const found = root.elementsFromPoint(x, y).find(
          (element) => element !== cover && element.getRootNode() === root);
      if (!found) break;
      target = found;
      if (found.shadowRoot) {
        root = found.shadowRoot;
      } else if (found.contentDocument && /^i?frame$/.test(found.localName)) {
        const box = found.getBoundingClientRect();
        x -= box.left + found.clientLeft;
        y -= box.top + found.clientTop;
        root = found.contentDocument;
      } else break;
    }
    return {target, x, y};
  };
  const isEngines = (element) => /^(i?frame|object|embed)$/.test(element?.localName) ||
                                 (element?.localName === 'input' && element.type === 'file');

  // Until the drop, pages may know that there are files, but not which.
  const unknownFiles = () => {
    const files = new DataTransfer();
    files.items.add(new File([], ''));
    return files;
  };
  const send = (type, event, {target, x, y}, dataTransfer = unknownFiles(), relatedTarget = null) => {
    if (!target) return true;
    const {screenX, screenY, ctrlKey, shiftKey, altKey, metaKey} = event;
    return target.dispatchEvent(new DragEvent(type, {
      bubbles: true, cancelable: type !== 'dragleave', composed: true, view: window, clientX: x,
      clientY: y, screenX, screenY, ctrlKey, shiftKey, altKey, metaKey, relatedTarget, dataTransfer}));
  };
  const moveTo = (event, place) => {
    if (place.target === below) return;
    const former = below;
    below = place.target;
    send('dragenter', event, place, unknownFiles(), former);
    if (former) send('dragleave', event, {...place, target: former}, unknownFiles(), below);
  };
  const leave = (event) => {
    const former = below;
    below = null;
    if (former) send('dragleave', event, {...find(event), target: former});
  };

  const uncover = () => {
    cover?.remove();
    cover = below = dropped = null;
    depth = 0;
  };
  const setTouchable = (touchable) =>
      cover.style.setProperty('pointer-events', touchable ? 'auto' : 'none', 'important');
  globalThis.filesAreDragged = () => {
    uncover();
    cover = document.createElement('input');
    cover.type = 'file';
    cover.multiple = true;
    cover.style.cssText = ['all: initial', 'position: fixed', 'inset: 0', 'width: 100%',
        'height: 100%', 'z-index: 2147483647', 'opacity: 0'].join(' !important;') + ' !important';
    const dialog = [...document.querySelectorAll('dialog:modal')].pop();
    (document.fullscreenElement ?? dialog ?? document.documentElement).append(cover);
    cover.popover = 'manual';
    cover.showPopover();
  };

  const overPage = (event) => {
    if (isEngines(event.target)) return;
    // The page saw the drag enter before it was known to be one of files.
    if (event.type === 'dragleave' && event.target === entered) {
      entered = null;
      return;
    }
    event.stopImmediatePropagation();
    if (event.type !== 'dragenter') return;
    setTouchable(true);
    moveTo(event, find(event));
  };
  const overCover = (event) => {
    event.stopImmediatePropagation();
    if (event.type === 'drop') {
      dropped = {event, ...find(event)};
      return;
    }
    if (event.type === 'dragleave') {
      if (--depth === 0) leave(event);
      return;
    }
    if (event.type === 'dragenter') ++depth;
    const place = find(event);
    if (isEngines(place.target)) {
      leave(event);
      setTouchable(false);
      return;
    }
    moveTo(event, place);
    if (event.type === 'dragover' && send('dragover', event, place)) {
      event.preventDefault();
      event.dataTransfer.dropEffect = 'none';
    }
  };
  for (const type of ['dragenter', 'dragover', 'dragleave', 'drop'])
    addEventListener(type, (event) => {
      if (!event.isTrusted) return;
      if (cover) (event.target === cover ? overCover : overPage)(event);
      else if (type === 'dragenter') entered = event.target;
    }, true);

  // The engine has put the files into the input.
  for (const type of ['input', 'change'])
    addEventListener(type, (event) => {
      if (!cover || event.target !== cover) return;
      event.stopImmediatePropagation();
      if (type === 'input' || !dropped) return;
      const files = new DataTransfer();
      for (const file of cover.files) files.items.add(file);
      const {event: drop, ...place} = dropped;
      uncover();
      send('drop', drop, place, files);
    }, true);
  // There are none during a drag.
  for (const type of ['mousemove', 'mousedown', 'keydown'])
    addEventListener(type, (event) => {
      if (cover && !dropped && event.isTrusted) uncover();
    }, true);
})())";

bool beganIn(GtkWidget* view, GdkDrop* drop) {
    GdkDrag* const drag = gdk_drop_get_drag(drop);
    GtkNative* const native = gtk_widget_get_native(view);
    return drag && native && gdk_drag_get_surface(drag) == gtk_native_get_surface(native);
}

bool areLocalFiles(const GValue* value) {
    GSList* const files = value ? static_cast<GSList*>(g_value_get_boxed(value)) : nullptr;
    for (GSList* file = files; file; file = file->next)
        if (!g_file_is_native(G_FILE(file->data)))
            return false;
    return files != nullptr;
}

Task<void> coverIfFiles(gobject::GObjectPointer<WebKitWebView> view,
                        gobject::GObjectPointer<GdkDrop> drop) {
    const auto start = [&drop](GAsyncReadyCallback ready, gpointer data) {
        gdk_drop_read_value_async(drop.get(), GDK_TYPE_FILE_LIST, G_PRIORITY_HIGH, nullptr, ready,
                                  data);
    };
    const auto result = co_await gobject::asyncResult(start);
    // The value belongs to the drop. There is none when what is dragged only looked like files.
    if (areLocalFiles(gdk_drop_read_value_finish(drop.get(), result.get(), nullptr)))
        webkit_web_view_evaluate_javascript(view.get(), "globalThis.filesAreDragged?.()", -1,
                                            ownScriptWorld, nullptr, nullptr, nullptr, nullptr);
}

void dragEntered(GtkDropControllerMotion* controller, double, double, gpointer) {
    GtkWidget* const view = gtk_event_controller_get_widget(GTK_EVENT_CONTROLLER(controller));
    GdkDrop* const drop = gtk_drop_controller_motion_get_drop(controller);
    if (!drop || beganIn(view, drop) ||
        !gdk_content_formats_contain_mime_type(gdk_drop_get_formats(drop), "text/uri-list"))
        return;
    spawn(coverIfFiles(gobject::GObjectPointer<WebKitWebView>::share(WEBKIT_WEB_VIEW(view)),
                       gobject::GObjectPointer<GdkDrop>::share(drop)));
}

} // namespace

void offerDroppedFiles(WebKitWebView* view, const Url& service) {
    DocumentStartScript script{.source = onlyIn(service, droppingScript)};
    script.frames = WEBKIT_USER_CONTENT_INJECT_TOP_FRAME;
    script.world = ownScriptWorld;
    script.allowed = {pagesOfHost(service)};
    addDocumentStartScript(webkit_web_view_get_user_content_manager(view), script);
    GtkEventController* const controller = gtk_drop_controller_motion_new();
    g_signal_connect(controller, "enter", G_CALLBACK(dragEntered), nullptr);
    gtk_widget_add_controller(GTK_WIDGET(view), controller);
}

} // namespace kelo::webkit
