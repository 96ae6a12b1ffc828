#pragma once

#include <glib.h>

#include <memory>

namespace kelo::gobject {

struct GLibDeleter {
    void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
    void operator()(GDateTime* time) const { g_date_time_unref(time); }
    void operator()(GOptionContext* context) const { g_option_context_free(context); }
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
    void operator()(GUri* uri) const { g_uri_unref(uri); }
    void operator()(GVariant* value) const { g_variant_unref(value); }
    void operator()(GVariantIter* iterator) const { g_variant_iter_free(iterator); }
    void operator()(GList* list) const { g_list_free(list); }
    void operator()(GSList* list) const { g_slist_free(list); }
};

/// Owning pointers to GLib's own types, which are no GObjects. A list is freed without its
/// elements: they need owners of their own.
using GBytesPointer = std::unique_ptr<GBytes, GLibDeleter>;
using GDateTimePointer = std::unique_ptr<GDateTime, GLibDeleter>;
using GHashTablePointer = std::unique_ptr<GHashTable, GLibDeleter>;
using GOptionContextPointer = std::unique_ptr<GOptionContext, GLibDeleter>;
using GUriPointer = std::unique_ptr<GUri, GLibDeleter>;
using GVariantPointer = std::unique_ptr<GVariant, GLibDeleter>;
using GVariantIterPointer = std::unique_ptr<GVariantIter, GLibDeleter>;
using GListPointer = std::unique_ptr<GList, GLibDeleter>;
using GSListPointer = std::unique_ptr<GSList, GLibDeleter>;

} // namespace kelo::gobject
