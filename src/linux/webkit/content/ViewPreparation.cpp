#include "linux/webkit/content/ViewPreparation.h"

#include "base/Translation.h"
#include "linux/webkit/content/ContextMenus.h"
#include "linux/webkit/content/DroppedFiles.h"
#include "linux/webkit/content/PastedImages.h"
#include "linux/webkit/keyboard/PageKeyboard.h"

namespace kelo::webkit {

void prepareView(WebKitWebView* view, const Url& service) {
    // Otherwise it would be announced by the name of its class, or not at all: since GTK 4.18 the
    // role that widgets have by themselves takes no name.
    g_object_set(view, "accessible-role", GTK_ACCESSIBLE_ROLE_REGION, nullptr);
    gtk_accessible_update_property(GTK_ACCESSIBLE(view), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   translated("Web page").c_str(), -1);
    attachPageKeyboard(view);
    removeUselessMenuItems(view);
    offerPastedImages(view, service);
    offerDroppedFiles(view, service);
}

} // namespace kelo::webkit
