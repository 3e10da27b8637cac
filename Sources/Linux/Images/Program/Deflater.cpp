#include "Linux/Images/Program/Deflater.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <array>

namespace tavel {
namespace {

/// The fastest level that looks for the best Huffman codes: a user waits for the file, and it is soon
/// deleted.
constexpr std::uint32_t level = 1;

/// The library takes pointers to non-const, but only reads.
std::uint8_t* readable(std::span<const std::uint8_t> bytes) {
    return const_cast<std::uint8_t*>(bytes.data());
}

} // namespace

struct Deflater::State {
    isal_zstream stream{}; // isal_deflate_stateless_init leaves some fields as they are, such as the size of
                           // the window
    std::array<std::uint8_t, ISAL_DEF_LVL1_DEFAULT> levelBuffer;
};

Deflater::Deflater() : state_(std::make_unique_for_overwrite<State>()) {}

Deflater::~Deflater() = default;

std::size_t Deflater::compress(std::span<const std::uint8_t> piece, bool isLast,
                               std::uint8_t* target) noexcept {
    isal_zstream& stream = state_->stream;
    isal_deflate_stateless_init(&stream);
    stream.level = level;
    stream.level_buf = state_->levelBuffer.data();
    stream.level_buf_size = static_cast<std::uint32_t>(state_->levelBuffer.size());
    stream.flush = FULL_FLUSH;
    stream.end_of_stream = isLast ? 1 : 0;
    stream.next_in = readable(piece);
    stream.avail_in = static_cast<std::uint32_t>(piece.size());
    stream.next_out = target;
    stream.avail_out = static_cast<std::uint32_t>(bound(piece.size()));
    const bool isDone = isal_deflate_stateless(&stream) == COMP_OK && stream.avail_in == 0;
    return isDone ? stream.total_out : 0;
}

std::uint32_t adler32(std::uint32_t before, std::span<const std::uint8_t> bytes) {
    return isal_adler32(before, bytes.data(), bytes.size());
}

std::uint32_t crc32(std::span<const std::uint8_t> bytes) {
    return crc32_gzip_refl(0, bytes.data(), bytes.size());
}

} // namespace tavel
