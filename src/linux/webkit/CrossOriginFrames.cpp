#include "linux/webkit/ForeignFrames.h"

#include "linux/webkit/GuardScript.h"

namespace kelo::webkit {

namespace {

// For documents of the service. The engine lets a frame of another origin ask only where the
// frame's "allow" says so; nothing of it is left before the frame's document can be there, since
// that comes in a later turn of the event loop than the microtask that an observer runs in. 'none'
// stays: that is less than what a frame of the service has without being told.
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

// For frames of others, should one be allowed to ask after all. A whole page of another origin is
// the delegate's to refuse.
constexpr const char* pinningScript = R"((() => {
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

void keepMediaFromForeignFrames(WebKitUserContentManager* manager, const Url& service) {
    addGuardScript(manager, {.source = onlyIn(service, withholdingScript)});
    addGuardScript(manager, {.source = exceptIn(service, pinningScript)});
}

} // namespace kelo::webkit
