#include "linux/webkit/content/LoadMoments.h"

#include "posix/Moments.h"

namespace kelo::webkit {

namespace {

void loadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer) {
    using posix::Moment;
    switch (event) {
    case WEBKIT_LOAD_STARTED:
        return posix::mark(Moment::loadStarted);
    case WEBKIT_LOAD_REDIRECTED:
        return;
    case WEBKIT_LOAD_COMMITTED:
        return posix::mark(Moment::loadCommitted);
    case WEBKIT_LOAD_FINISHED:
        return posix::mark(Moment::loadFinished);
    }
}

} // namespace

void markLoads(WebKitWebView* view) {
    if (!posix::momentsAreFollowed())
        return;
    posix::mark(posix::Moment::viewMade);
    g_signal_connect(view, "load-changed", G_CALLBACK(&loadChanged), nullptr);
}

} // namespace kelo::webkit
