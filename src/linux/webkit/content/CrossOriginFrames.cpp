#include "linux/webkit/content/CrossOriginFrames.h"

#include "linux/webkit/content/DocumentStartScript.h"

namespace kelo::webkit {

namespace {

// For documents of the service. The engine refuses a cross-origin frame unless its "allow"
// attribute names the device. An observer runs in a microtask and a frame's document arrives in a
// later turn of the event loop, so the attribute is always cleaned in time. 'none' is kept: it
// restricts frames of the service, too.
constexpr const char* withholdingScript = R"((() => {
  const withheld = /^\s*(microphone|camera|display-capture)\b(?!\s*'none'\s*$)/i;
  const {getAttribute, setAttribute, attachShadow} = Element.prototype;
  const withhold = (frame) => {
    const allow = getAttribute.call(frame, 'allow');
    if (allow === null) return;
    const rest = allow.split(';').filter((part) => !withheld.test(part)).join(';');
    if (rest !== allow) setAttribute.call(frame, 'allow', rest);
  };
  const look = (node) => {
    if (node instanceof HTMLIFrameElement) withhold(node);
    if (node.shadowRoot) watch(node.shadowRoot);
    if (node.querySelectorAll)
      for (const inner of node.querySelectorAll('*')) {
        if (inner instanceof HTMLIFrameElement) withhold(inner);
        if (inner.shadowRoot) watch(inner.shadowRoot);
      }
  };
  const observer = new MutationObserver((changes) => {
    for (const change of changes) {
      if (change.type === 'attributes') look(change.target);
      for (const node of change.addedNodes) look(node);
    }
  });
  const watched = new WeakSet();
  const watch = (root) => {
    if (watched.has(root)) return;
    watched.add(root);
    observer.observe(root, {childList: true, subtree: true, attributeFilter: ['allow']});
    look(root);
  };
  watch(document);
  Element.prototype.attachShadow = function (init) {
    const root = attachShadow.call(this, init);
    watch(root);
    return root;
  };
})())";

// For cross-origin frames, in case the engine allows a request after all. A page of another origin
// in the main frame is refused by the delegate.
constexpr const char* refusingScript = R"((() => {
  if (self === top) return;
  const refuse = () => Promise.reject(new DOMException(
      'Only the service itself may use the microphone and the camera.', 'NotAllowedError'));
  for (const owner of [window.MediaDevices?.prototype, navigator.mediaDevices])
    for (const name of ['getUserMedia', 'getDisplayMedia'])
      if (owner)
        Object.defineProperty(owner, name, {value: refuse, enumerable: true, writable: false,
                                            configurable: false});
})())";

} // namespace

void denyMediaToCrossOriginFrames(WebKitUserContentManager* manager, const Url& service) {
    addDocumentStartScript(manager, {.source = onlyIn(service, withholdingScript)});
    addDocumentStartScript(manager, {.source = exceptIn(service, refusingScript)});
}

} // namespace kelo::webkit
