#include "component/webkit/MediaFixture.h"

#include <string_view>

namespace kelo::test {

MediaFixture::MediaFixture() : window(gtk_window_new()) {}

MediaFixture::~MediaFixture() {
    gtk_window_destroy(GTK_WINDOW(window));
}

void MediaFixture::makeMediaView(const Url& service) {
    makeView(service);
    view->setUserInterfaceDelegate(decider);
    useMakeBelieveDevices();
    showInWindow();
}

void MediaFixture::showInWindow() {
    gtk_window_set_child(GTK_WINDOW(window), GTK_WIDGET(native()));
    gtk_window_present(GTK_WINDOW(window));
}

void MediaFixture::useMakeBelieveDevices() {
    WebKitSettings* const settings = webkit_web_view_get_settings(native());
    WebKitFeatureList* const features = webkit_settings_get_all_features();
    bool found = false;
    for (gsize index = 0; index < webkit_feature_list_get_length(features); ++index) {
        WebKitFeature* const feature = webkit_feature_list_get(features, index);
        if (std::string_view(webkit_feature_get_identifier(feature)) != "MockCaptureDevices")
            continue;
        webkit_settings_set_feature_enabled(settings, feature, TRUE);
        found = true;
    }
    webkit_feature_list_unref(features);
    ASSERT_TRUE(found);
}

std::string MediaFixture::outcomeOf(const std::string& promise) {
    evaluate("window.outcome = ''; Promise.resolve().then(() => " + promise +
             ").then(() => outcome = 'captured', (error) => outcome = error.name); 1");
    loop.runUntil([&] { return !evaluate("outcome").empty(); });
    return evaluate("outcome");
}

} // namespace kelo::test
