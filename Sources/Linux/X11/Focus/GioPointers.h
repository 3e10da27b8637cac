#pragma once

#include <gio/gio.h>

#include <memory>

namespace tavel {

struct GioRelease {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
    void operator()(GVariantIter* iterator) const { g_variant_iter_free(iterator); }
    void operator()(GCancellable* cancellable) const { g_object_unref(cancellable); }
    void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
    void operator()(GIOStream* stream) const { g_object_unref(stream); }
    void operator()(char* text) const { g_free(text); }
};

/// Owns what a function of GLib or GIO returns for its caller to free.
template <typename Kind>
using GioPointer = std::unique_ptr<Kind, GioRelease>;

} // namespace tavel
