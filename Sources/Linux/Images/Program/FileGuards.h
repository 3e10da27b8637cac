#pragma once

#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// Guards for files that make a decoder do far more work than their first image needs. Each takes a file of
/// its format that has passed readImageHeader, and returns the bytes that may be decoded. nullopt means that
/// the file must not be decoded.

/// The first frame of a GIF, and its place on the screen in pixels.
struct GifFrame {
    Bytes file; // of this frame only, on a screen of exactly its size
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

/// The first frame by itself: decoders index all frames first, and libvips takes minutes to pass over a tall
/// screen above a frame. nullopt if that frame is cut short.
std::optional<GifFrame> firstFrameOfGif(const Bytes& file);

/// The file, unless it has more than 100 scans: a decoder goes over the whole picture for each scan, even for
/// an empty one.
std::optional<Bytes> jpegWithFewScans(const Bytes& file);

/// The file with its first directory only: decoders count all directories first. nullopt if a tile or the
/// number of samples per pixel is absurdly large.
std::optional<Bytes> firstDirectoryOfTiff(const Bytes& file);

/// The file, unless it has more than 10,000 frames: decoders index all frames first.
std::optional<Bytes> webpWithFewFrames(const Bytes& file);

} // namespace tavel
