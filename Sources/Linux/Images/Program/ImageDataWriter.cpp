#include "Linux/Images/Program/ImageDataWriter.h"

#include <sched.h>

#include <algorithm>
#include <new>
#include <system_error>

namespace tavel {
namespace {

/// Decoding is a third of the work, and a single thread does it. More helpers would wait for it.
constexpr std::size_t mostHelpers = 3;

constexpr std::size_t chunkStart = 8; // length and name
constexpr std::size_t checksumSize = 4;

/// Those that this process may use. Not std::thread::hardware_concurrency, which counts the others, too, and
/// reads a file.
std::size_t countProcessors() {
    cpu_set_t processors;
    if (sched_getaffinity(0, sizeof processors, &processors) != 0)
        return 2; // more than such a set can hold, for instance
    return static_cast<std::size_t>(CPU_COUNT(&processors));
}

void putBigEndian(std::uint32_t value, std::uint8_t* target) {
    for (unsigned i = 0; i < 4; ++i)
        target[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

} // namespace

/// A part of the zlib stream, before and after compression. All its memory is allocated from the start, so
/// that compressing it cannot fail on another thread.
struct ImageDataWriter::Band {
    Band() : chunk(std::make_unique_for_overwrite<std::uint8_t[]>(chunkRoom)) { bytes.reserve(bandSize); }

    void compress() noexcept;

    static constexpr std::size_t overhead = chunkStart + sizeof zlibStart + 2 * checksumSize;
    static constexpr std::size_t chunkRoom = Deflater::bound(bandSize) + overhead;

    Deflater deflater;
    std::vector<std::uint8_t> bytes;
    bool isFirst = false;
    bool isLast = false;
    std::uint32_t checksum = 0; // of the whole stream; only the last band needs it
    std::unique_ptr<std::uint8_t[]> chunk;
    std::size_t chunkSize = 0; // 0 if compressing has failed
    bool isDone = false;       // compressed, and not written yet
};

void ImageDataWriter::Band::compress() noexcept {
    std::uint8_t* at = chunk.get() + chunkStart;
    if (isFirst)
        at = std::copy(std::begin(zlibStart), std::end(zlibStart), at);
    const std::size_t size = deflater.compress(bytes, isLast, at);
    if (size == 0) {
        chunkSize = 0;
        return;
    }
    at += size;
    if (isLast) {
        putBigEndian(checksum, at);
        at += checksumSize;
    }
    const auto dataSize = static_cast<std::size_t>(at - chunk.get()) - chunkStart;
    putBigEndian(static_cast<std::uint32_t>(dataSize), chunk.get());
    std::copy_n("IDAT", 4, chunk.get() + 4);
    putBigEndian(crc32({chunk.get() + 4, 4 + dataSize}), at);
    chunkSize = chunkStart + dataSize + checksumSize;
}

ImageDataWriter::ImageDataWriter(ImageOutput& output) : output_(output) {}

ImageDataWriter::~ImageDataWriter() {
    {
        const Lock lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    for (std::thread& helper : helpers_)
        helper.join();
}

bool ImageDataWriter::append(std::span<const std::uint8_t> bytes) {
    if (bands_.empty())
        addBand();
    checksum_ = adler32(checksum_, bytes);
    while (!bytes.empty()) {
        // Only now that more bytes have come: the last band must not be empty, and a single one needs no
        // help.
        if (slot(filled_).bytes.size() == bandSize) {
            if (helpers_.empty() && filled_ == 0)
                startHelpers();
            if (!submit())
                return false;
        }
        std::vector<std::uint8_t>& band = slot(filled_).bytes;
        const auto part = bytes.first(std::min(bytes.size(), bandSize - band.size()));
        band.insert(band.end(), part.begin(), part.end());
        bytes = bytes.subspan(part.size());
    }
    return true;
}

bool ImageDataWriter::finish() {
    Band& last = slot(filled_);
    last.isLast = true;
    last.checksum = checksum_;
    Lock lock(mutex_);
    ++filled_;
    changed_.notify_all();
    while (isWritable_ && written_ < filled_)
        compressOrWait(lock);
    return isWritable_;
}

void ImageDataWriter::addBand() {
    bands_.push_back(std::make_unique<Band>());
    bands_.front()->isFirst = true;
}

void ImageDataWriter::startHelpers() {
    const std::size_t wanted = std::min(countProcessors() - 1, mostHelpers);
    if (wanted == 0)
        return;
    // For each helper and the caller, one to work on and one that waits.
    while (bands_.size() < 2 * (wanted + 1))
        addBand();
    try {
        helpers_.reserve(wanted);
        while (helpers_.size() < wanted)
            helpers_.emplace_back(&ImageDataWriter::help, this);
    } catch (const std::system_error&) { // the caller and those that have started do the work
    }
}

void ImageDataWriter::help() {
    Lock lock(mutex_);
    while (!isEnding_)
        compressOrWait(lock);
}

/// Hands the filled band over and makes room for the next one.
bool ImageDataWriter::submit() {
    Lock lock(mutex_);
    ++filled_;
    changed_.notify_all();
    while (isWritable_ && filled_ - written_ == bands_.size())
        compressOrWait(lock);
    return isWritable_;
}

void ImageDataWriter::compressOrWait(Lock& lock) {
    if (taken_ < filled_)
        compressNext(lock);
    else
        changed_.wait(lock);
}

void ImageDataWriter::compressNext(Lock& lock) {
    Band& band = slot(taken_++);
    lock.unlock();
    band.compress();
    lock.lock();
    band.isDone = true;
    for (; written_ < taken_ && slot(written_).isDone; ++written_) {
        Band& done = slot(written_);
        isWritable_ = isWritable_ && done.chunkSize != 0 &&
                      output_.append({reinterpret_cast<const char*>(done.chunk.get()), done.chunkSize});
        done.bytes.clear();
        done.isFirst = false;
        done.isDone = false;
    }
    changed_.notify_all();
}

} // namespace tavel
