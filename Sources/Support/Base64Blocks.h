#pragma once

#include "Support/Base64Groups.h"

#include <cstddef>
#include <span>

namespace tavel {

/// The part of the loops in Base64Groups.h that works on whole vectors of one kind of processor. Each
/// function may stop early: where a vector would read or write beyond what those loops may, and before a
/// block that has anything but what it copies or decodes. Each returns the number of characters or bytes it
/// has taken.
struct Base64Blocks {
    const char* name;
    bool (*runHere)(); // whether this processor has the instructions
    std::size_t (*encode)(const char* bytes, std::size_t size, char* out);
    std::size_t (*decode)(const char* text, std::size_t size, char* out);
    CopiedText (*copyWithoutSlashEscapes)(const char* text, std::size_t size, char* out);
    CopiedText (*copyWithSlashEscapes)(const char* text, std::size_t size, char* out);
};

/// For each kind of vector that the program was built with, the best first. The last has no vectors and runs
/// on every processor.
std::span<const Base64Blocks> base64Blocks();

/// The functions of Base64Groups.h with vectors of one kind, which must run on this processor.
char* encodeBase64Groups(const Base64Blocks& blocks, std::string_view bytes, char* out);
std::size_t decodeBase64Groups(const Base64Blocks& blocks, std::string_view text, char* out);
CopiedText copyWithoutSlashEscapes(const Base64Blocks& blocks, std::string_view text, char* out);
char* copyWithSlashEscapes(const Base64Blocks& blocks, std::string_view text, char* out);

} // namespace tavel
