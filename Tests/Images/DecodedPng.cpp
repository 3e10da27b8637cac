#include "Tests/Images/DecodedPng.h"

#include <png.h>

#include <algorithm>
#include <stdexcept>

namespace tavel {
namespace {

[[noreturn]] void fail(png_structp, png_const_charp message) {
    throw std::runtime_error(message);
}

void readFrom(png_structp png, png_bytep target, size_t size) {
    auto& rest = *static_cast<std::string_view*>(png_get_io_ptr(png));
    if (rest.size() < size)
        throw std::runtime_error("the file is cut short");
    std::copy_n(rest.data(), size, reinterpret_cast<char*>(target));
    rest.remove_prefix(size);
}

/// Frees libpng's structures, also after an exception.
struct Reader {
    explicit Reader(std::string_view file)
        : rest(file), png(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, fail)),
          info(png_create_info_struct(png)) {
        png_set_read_fn(png, &rest, readFrom);
    }
    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    std::string_view rest;
    png_structp png;
    png_infop info;
};

std::string readProfile(Reader& reader) {
    png_charp name = nullptr;
    int compression = 0;
    png_bytep data = nullptr;
    png_uint_32 size = 0;
    if (png_get_iCCP(reader.png, reader.info, &name, &compression, &data, &size) == 0)
        return {};
    return {reinterpret_cast<const char*>(data), size};
}

DecodedPng decode(Reader& reader) {
    png_read_info(reader.png, reader.info);
    DecodedPng result;
    result.width = png_get_image_width(reader.png, reader.info);
    result.height = png_get_image_height(reader.png, reader.info);
    result.depth = png_get_bit_depth(reader.png, reader.info);
    result.colourType = png_get_color_type(reader.png, reader.info);
    result.profile = readProfile(reader);
    png_set_expand_16(reader.png);
    png_set_gray_to_rgb(reader.png);
    png_set_add_alpha(reader.png, 0xFFFF, PNG_FILLER_AFTER);
    png_set_swap(reader.png); // the lower byte first
    png_set_interlace_handling(reader.png);
    png_read_update_info(reader.png, reader.info);
    result.pixels.resize(std::size_t{4} * result.width * result.height);
    std::vector<png_bytep> rows;
    for (std::size_t y = 0; y < result.height; ++y)
        rows.push_back(reinterpret_cast<png_bytep>(result.pixels.data() + y * 4 * result.width));
    png_read_image(reader.png, rows.data());
    png_read_end(reader.png, nullptr);
    return result;
}

} // namespace

std::optional<DecodedPng> decodePng(std::string_view file) {
    try {
        Reader reader(file);
        return decode(reader);
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

} // namespace tavel
