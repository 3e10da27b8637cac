#include "Linux/Images/Program/VipsRuntime.h"

#include <gmodule.h>
#include <vips/vector.h>

namespace tavel {
namespace {

constexpr int threadCount = 2;

/// What heif_init returns (libheif/heif.h); we link the plugin's library through the plugin only.
struct HeifError {
    int code;
    int subcode;
    const char* message;
};

void dropMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

GLogWriterOutput dropFields(GLogLevelFlags, const GLogField*, gsize, gpointer) {
    return G_LOG_WRITER_HANDLED;
}

bool initialise() {
    // Keeps libvips from loading its plugins: they read dozens of formats that we refuse, and take ten times
    // as long to start as libvips itself. vips_init would set the variable if it were not set.
    g_setenv("VIPSHOME", "/nonexistent", TRUE);
    const bool isStarted = vips_init("tavel-images") == 0;
    g_unsetenv("VIPSHOME");
    if (!isStarted)
        return false;
    vips_block_untrusted_set(TRUE);
    vips_cache_set_max(0);
    vips_cache_set_max_mem(0);
    vips_cache_set_max_files(0);
    vips_concurrency_set(threadCount);
    vips_vector_set_enabled(FALSE); // its code is generated at run time, which the lock forbids
    // Drops warnings about malformed files.
    g_log_set_default_handler(dropMessage, nullptr);
    g_log_set_writer_func(dropFields, nullptr, nullptr);
    return true;
}

} // namespace

bool startVips() {
    static const bool isStarted = initialise();
    return isStarted;
}

bool loadHeifPlugin() {
    static const bool isLoaded = [] {
        GModule* const plugin = g_module_open(TAVEL_VIPS_HEIF_PLUGIN, G_MODULE_BIND_LOCAL);
        if (plugin == nullptr)
            return false;
        g_module_make_resident(plugin); // its types stay registered
        // libheif has plugins, too, which it looks for with the first picture, unless it has done so already.
        gpointer start = nullptr;
        if (g_module_symbol(plugin, "heif_init", &start) != FALSE)
            reinterpret_cast<HeifError (*)(void*)>(start)(nullptr);
        return true;
    }();
    return isLoaded;
}

} // namespace tavel
