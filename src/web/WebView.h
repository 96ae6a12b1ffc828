#pragma once

#include "web/WebModel.h"

#include <memory>

namespace kelo::web {

/// Places a model's web view in a window. It may be made and dropped any number of times: the view,
/// and with it the state of the page, is the model's.
struct WebView {
    std::shared_ptr<WebModel> model;

    /// The same instance at every call.
    std::shared_ptr<platform::EmbeddedWebView> makeView() const { return model->webView; }
};

} // namespace kelo::web
