#pragma once

#include "Linux/Images/Program/Deflater.h"
#include "Linux/Images/Program/ImageOutput.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

namespace tavel {

/// Compresses the filtered rows of a PNG file and writes them as IDAT chunks, one for each band. From the
/// second band on, threads help that end with the writer. Where there is no other processor, or no thread can
/// be created, the caller does everything. A few bands are in memory at a time. For one caller at a time.
class ImageDataWriter {
public:
    /// Bytes. Large enough that independent bands cost no more than 0.1 percent of the file, small enough for
    /// a processor's cache.
    static constexpr std::size_t bandSize = std::size_t{512} * 1024;

    /// The output must outlive the writer, and nobody else may use it between the first append and finish.
    explicit ImageDataWriter(ImageOutput& output);
    ~ImageDataWriter();
    ImageDataWriter(const ImageDataWriter&) = delete;
    ImageDataWriter& operator=(const ImageDataWriter&) = delete;

    /// Takes the next bytes, as many as the caller likes. False if the file does not fit into the output;
    /// what comes after that is in vain. Throws std::bad_alloc.
    bool append(std::span<const std::uint8_t> bytes);

    /// Writes what is left. At least one byte must have been appended. False if it does not fit.
    bool finish();

private:
    struct Band;
    using Lock = std::unique_lock<std::mutex>;

    Band& slot(std::size_t number) { return *bands_[number % bands_.size()]; }
    void addBand();
    void startHelpers();
    void help();
    bool submit();
    void compressNext(Lock& lock);
    void compressOrWait(Lock& lock);

    ImageOutput& output_;
    std::uint32_t checksum_ = 1;
    std::vector<std::unique_ptr<Band>> bands_; // band n is in slot n modulo their number
    std::vector<std::thread> helpers_;

    std::mutex mutex_; // for what follows, and for the output
    std::condition_variable changed_;
    std::size_t filled_ = 0;  // number of bands that have been filled
    std::size_t taken_ = 0;   // of these, taken for compression
    std::size_t written_ = 0; // of these, written
    bool isWritable_ = true;
    bool isEnding_ = false;
};

} // namespace tavel
