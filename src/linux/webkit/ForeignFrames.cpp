#include "linux/webkit/ForeignFrames.h"

#include "linux/webkit/GuardScript.h"

namespace kelo::desktop {

namespace {

constexpr const char* pinningScript = R"((() => {
  const refuse = () => Promise.reject(new DOMException(
      'Only the service itself may use the microphone and the camera.', 'NotAllowedError'));
  const pin = (owner, name) => {
    if (owner) Object.defineProperty(owner, name, {value: refuse, writable: false,
                                                   configurable: false, enumerable: true});
  };
  for (const name of ['getUserMedia', 'getDisplayMedia'])
    pin(window.MediaDevices?.prototype, name);
})())";

} // namespace

void keepMediaFromForeignFrames(WebKitUserContentManager* manager, const platform::Url& service) {
    addGuardScript(manager, {.source = exceptIn(service, pinningScript)});
}

} // namespace kelo::desktop
