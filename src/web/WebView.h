#pragma once

#include "web/WebModel.h"

#include <memory>

namespace kelo::web {

/// Places a model's web view in a window. Can be created and destroyed any number of times: the
/// model owns the view and so the state of the page.
struct WebView {
    std::shared_ptr<WebModel> model;

    /// The same instance at every call.
    std::shared_ptr<platform::EmbeddedWebView> makeView() const { return model->webView; }
};

} // namespace kelo::web
