#include "Linux/Images/Program/VipsRuntime.h"

#include <gmodule.h>
#include <malloc.h>

#include <chrono>
#include <mutex>

namespace tavel {
namespace {

constexpr int threadCount = 2;

/// The largest picture takes two seconds. Only a file made to take long comes near this.
constexpr std::chrono::seconds conversionTimeout{20};

void dropMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

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
    // Drops warnings about malformed files. GLib would write them to standard error.
    for (const char* const domain : {"VIPS", "GdkPixbuf"})
        g_log_set_handler(domain, static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK), dropMessage, nullptr);
    return true;
}

void stopWhenLate(VipsImage* image, VipsProgress* progress, gpointer) {
    if (progress->run >= conversionTimeout.count())
        vips_image_set_kill(image, TRUE);
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
        return true;
    }();
    return isLoaded;
}

VipsConversion::~VipsConversion() {
    vips_error_clear();
    vips_thread_shutdown();
    malloc_trim(0);
}

void setDeadline(VipsImage* image) {
    vips_image_set_progress(image, TRUE);
    g_signal_connect(image, "eval", G_CALLBACK(stopWhenLate), nullptr);
}

} // namespace tavel
