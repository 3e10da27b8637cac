#pragma once

#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// Guards against files whose reading would cost much more than their first image does, or that the reader
/// trusts too much. Each takes a file of its format, with a sound header, and gives what a reader of that
/// format may be handed; nothing if it may not be read.

/// The file, if it holds all of its pixels: GDK-PixBuf shows whatever memory held before where rows are
/// missing.
std::optional<Bytes> completeBmp(const Bytes& file);

/// The first frame of a GIF, and where it lies on the screen.
struct GifFrame {
    Bytes file; // up to the end of that frame: readers index all frames first
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

/// Nothing if the first frame is cut short.
std::optional<GifFrame> firstFrameOfGif(const Bytes& file);

/// The file, if it has no more than 100 scans: each of them goes over the whole picture, even an empty one.
std::optional<Bytes> jpegWithFewScans(const Bytes& file);

/// The file with its first directory as the only one: readers count all directories first. Nothing if a tile
/// or a pixel of the first image is absurdly large.
std::optional<Bytes> firstDirectoryOfTiff(const Bytes& file);

/// The file, if it has no more than 10,000 frames: readers index all of them first.
std::optional<Bytes> webpWithFewFrames(const Bytes& file);

} // namespace tavel
