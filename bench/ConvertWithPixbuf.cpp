// convert-with-pixbuf IN OUT.png: does the same as convert-image, with GDK-PixBuf, for comparison.

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <iostream>

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: convert-with-pixbuf IN OUT.png\n";
        return 2;
    }
    GdkPixbuf* const pixels = gdk_pixbuf_new_from_file(arguments[1], nullptr);
    const bool isDone = pixels != nullptr && gdk_pixbuf_save(pixels, arguments[2], "png", nullptr,
                                                             "compression", "1", nullptr) != FALSE;
    if (pixels != nullptr)
        g_object_unref(pixels);
    return isDone ? 0 : 1;
}
