#pragma once

#include <glib-object.h>
#include <glib.h>

#include <memory>
#include <utility>

namespace kelo::gobject {

/// A counted reference to a GObject of a C library.
template <typename T>
class GObjectPointer {
public:
    GObjectPointer() = default;
    GObjectPointer(const GObjectPointer& other) : object(other.object) {
        if (object)
            g_object_ref(object);
    }
    GObjectPointer(GObjectPointer&& other) noexcept
        : object(std::exchange(other.object, nullptr)) {}
    GObjectPointer& operator=(GObjectPointer other) noexcept {
        std::swap(object, other.object);
        return *this;
    }
    ~GObjectPointer() {
        if (object)
            g_object_unref(object);
    }

    /// Takes over a reference the caller owns (transfer full).
    static GObjectPointer adopt(T* object) {
        GObjectPointer pointer;
        pointer.object = object;
        return pointer;
    }
    /// Takes a reference of its own (transfer none); sinks a floating one.
    static GObjectPointer share(T* object) {
        if (object)
            g_object_ref_sink(object);
        return adopt(object);
    }

    T* get() const { return object; }
    explicit operator bool() const { return object != nullptr; }

private:
    T* object = nullptr;
};

struct GFreeDeleter {
    void operator()(void* memory) const { g_free(memory); }
};
/// A text the C library allocated.
using GText = std::unique_ptr<char, GFreeDeleter>;

struct GErrorDeleter {
    void operator()(GError* error) const { g_error_free(error); }
};
using GErrorPointer = std::unique_ptr<GError, GErrorDeleter>;

} // namespace kelo::gobject
