#include "linux/webkit/content/WorkerNotifications.h"

#include <memory>
#include <string_view>

namespace kelo::webkit {

namespace {

struct FeatureListDeleter {
    void operator()(WebKitFeatureList* list) const { webkit_feature_list_unref(list); }
};

} // namespace

void withholdWorkerNotifications(WebKitSettings* settings) {
    const std::unique_ptr<WebKitFeatureList, FeatureListDeleter> features(
        webkit_settings_get_all_features());
    for (gsize index = 0; index < webkit_feature_list_get_length(features.get()); ++index) {
        WebKitFeature* const feature = webkit_feature_list_get(features.get(), index);
        if (std::string_view(webkit_feature_get_identifier(feature)) == "NotificationEvent") {
            webkit_settings_set_feature_enabled(settings, feature, FALSE);
            return;
        }
    }
    g_warning("Notifications of service workers cannot be turned off in this engine");
}

} // namespace kelo::webkit
