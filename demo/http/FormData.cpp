#include "demo/http/FormData.h"

#include "linux/gobject/GObjectPointer.h"

#include <glib.h>

namespace kelo::demo {

std::optional<std::map<std::string, std::string>> parseForm(std::string_view text) {
    GUriParamsIter iterator;
    g_uri_params_iter_init(&iterator, text.data(), static_cast<gssize>(text.size()), "&",
                           G_URI_PARAMS_WWW_FORM);
    std::map<std::string, std::string> fields;
    for (;;) {
        char* name = nullptr;
        char* value = nullptr;
        GError* error = nullptr;
        const bool more = g_uri_params_iter_next(&iterator, &name, &value, &error);
        const gobject::GText nameOwner(name);
        const gobject::GText valueOwner(value);
        const gobject::GErrorPointer errorOwner(error);
        if (error)
            return std::nullopt;
        if (!more)
            return fields;
        if (!fields.try_emplace(name, value).second)
            return std::nullopt;
    }
}

} // namespace kelo::demo
