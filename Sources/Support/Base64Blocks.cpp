#include "Support/Base64Blocks.h"

#include "Support/Base64Alphabet.h"

#include <cstdint>
#include <cstring>

// This file is compiled once for each kind of vector but these, of which the processor need not have the
// instructions for cryptography and floating point. Highway's own choice and its assertions are in a shared
// library, which would cost every start of the agent. So only its headers are used.
#define HWY_IS_DEBUG_BUILD 0
#define HWY_DISABLE_PCLMUL_AES
#define HWY_DISABLE_BMI2_FMA
#define HWY_DISABLE_F16C
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Support/Base64Blocks.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// Within this region the compiler may use the instructions of one kind of processor everywhere. An inline
// function of the standard library that is compiled here could end up in the code for all processors: so none
// is used.
HWY_BEFORE_NAMESPACE();
namespace tavel::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

namespace hn = hwy::HWY_NAMESPACE;

using Octets = hn::ScalableTag<std::uint8_t>;
using Vector = hn::Vec<Octets>;
constexpr Octets octets;
constexpr std::size_t lanes = hn::MaxLanes(octets);

HWY_INLINE const std::uint8_t* asOctets(const char* characters) {
    return reinterpret_cast<const std::uint8_t*>(characters);
}

HWY_INLINE std::uint8_t* asOctets(char* characters) {
    return reinterpret_cast<std::uint8_t*>(characters);
}

/// The character for each number below 64.
HWY_INLINE Vector charactersOf(Vector sextets) {
    // 0 for a to z, 1 to 12 for the others from 0 on, and 13 for A to Z.
    const hn::RebindToSigned<Octets> signedOctets;
    const auto isCapital = hn::Lt(hn::BitCast(signedOctets, sextets), hn::Set(signedOctets, 26));
    const Vector capital = hn::BitCast(octets, hn::IfThenElseZero(isCapital, hn::Set(signedOctets, 13)));
    const Vector range = hn::Or(hn::SaturatedSub(sextets, hn::Set(octets, 51)), capital);
    return hn::Add(sextets,
                   hn::TableLookupBytes(hn::LoadDup128(octets, base64::encodingOffsets.bytes), range));
}

/// The number of each character. Sets bits of `refused` where a character is outside the alphabet.
HWY_INLINE Vector sextetsOf(Vector characters, Vector& refused) {
    const Vector high = hn::ShiftRight<4>(characters);
    const Vector low = hn::And(characters, hn::Set(octets, 15));
    refused =
        hn::Or(refused, hn::And(hn::TableLookupBytes(hn::LoadDup128(octets, base64::refusedBits.bytes), low),
                                hn::TableLookupBytes(hn::LoadDup128(octets, base64::rowBits.bytes), high)));
    const Vector slash = hn::VecFromMask(octets, hn::Eq(characters, hn::Set(octets, '/')));
    // The slash takes the row before its own, which no character has.
    const Vector row = hn::Add(high, slash);
    return hn::Add(characters,
                   hn::TableLookupBytes(hn::LoadDup128(octets, base64::decodingOffsets.bytes), row));
}

HWY_INLINE bool isZero(Vector v) {
    return hn::AllTrue(octets, hn::Eq(v, hn::Zero(octets)));
}

#if HWY_ARCH_ARM

// These processors take groups of three and four apart as they load, and put them together as they store.

std::size_t encode(const char* bytes, std::size_t size, char* out) {
    const Vector six = hn::Set(octets, 63);
    std::size_t taken = 0;
    for (; size - taken >= 3 * lanes; taken += 3 * lanes, out += 4 * lanes) {
        Vector a;
        Vector b;
        Vector c;
        hn::LoadInterleaved3(octets, asOctets(bytes + taken), a, b, c);
        const Vector first = hn::ShiftRight<2>(a);
        const Vector second = hn::And(hn::Or(hn::ShiftLeft<4>(a), hn::ShiftRight<4>(b)), six);
        const Vector third = hn::And(hn::Or(hn::ShiftLeft<2>(b), hn::ShiftRight<6>(c)), six);
        const Vector fourth = hn::And(c, six);
        hn::StoreInterleaved4(charactersOf(first), charactersOf(second), charactersOf(third),
                              charactersOf(fourth), octets, asOctets(out));
    }
    return taken;
}

std::size_t decode(const char* text, std::size_t size, char* out) {
    std::size_t taken = 0;
    for (; size - taken >= 4 * lanes; taken += 4 * lanes, out += 3 * lanes) {
        Vector a;
        Vector b;
        Vector c;
        Vector d;
        hn::LoadInterleaved4(octets, asOctets(text + taken), a, b, c, d);
        Vector refused = hn::Zero(octets);
        a = sextetsOf(a, refused);
        b = sextetsOf(b, refused);
        c = sextetsOf(c, refused);
        d = sextetsOf(d, refused);
        if (!isZero(refused))
            break;
        hn::StoreInterleaved3(hn::Or(hn::ShiftLeft<2>(a), hn::ShiftRight<4>(b)),
                              hn::Or(hn::ShiftLeft<4>(b), hn::ShiftRight<2>(c)),
                              hn::Or(hn::ShiftLeft<6>(c), d), octets, asOctets(out));
    }
    return taken;
}

#else

// These processors move bytes within parts of sixteen bytes, and only words of four bytes between the parts.

using Pairs = hn::Repartition<std::uint16_t, Octets>;
using Words = hn::Repartition<std::uint32_t, Octets>;
constexpr Pairs pairs;
constexpr Words words;

/// Moves each three words to the start of a part of four words.
HWY_INLINE Vector spreadWords(Vector v) {
    if constexpr (lanes == 16)
        return v;
    alignas(64) static constexpr std::int32_t from[16] = {0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12};
    return hn::BitCast(octets, hn::TableLookupLanes(hn::BitCast(words, v), hn::SetTableIndices(words, from)));
}

/// Moves the first three words of each part of four words together.
HWY_INLINE Vector gatherWords(Vector v) {
    if constexpr (lanes == 16)
        return v;
    alignas(64) static constexpr std::int32_t inTwoParts[8] = {0, 1, 2, 4, 5, 6, 7, 7};
    alignas(64) static constexpr std::int32_t inFourParts[16] = {0,  1,  2,  4,  5,  6,  8,  9,
                                                                 10, 12, 13, 14, 15, 15, 15, 15};
    const auto* const from = lanes == 32 ? inTwoParts : inFourParts;
    return hn::BitCast(octets, hn::TableLookupLanes(hn::BitCast(words, v), hn::SetTableIndices(words, from)));
}

/// The numbers of the characters for the first three quarters of a vector.
HWY_INLINE Vector sextetsOfBytes(Vector bytes) {
    alignas(16) static constexpr std::uint8_t groups[16] = {1, 0, 2, 1, 4,  3, 5,  4,
                                                            7, 6, 8, 7, 10, 9, 11, 10};
    const Vector grouped = hn::TableLookupBytes(spreadWords(bytes), hn::LoadDup128(octets, groups));
    // A shift by a different number of bits in each half of a word, as a multiplication.
    const auto firstAndThird =
        hn::BitCast(pairs, hn::And(hn::BitCast(words, grouped), hn::Set(words, 0x0FC0FC00)));
    const auto secondAndFourth =
        hn::BitCast(pairs, hn::And(hn::BitCast(words, grouped), hn::Set(words, 0x003F03F0)));
    return hn::BitCast(octets,
                       hn::Or(hn::MulHigh(firstAndThird, hn::BitCast(pairs, hn::Set(words, 0x04000040))),
                              hn::Mul(secondAndFourth, hn::BitCast(pairs, hn::Set(words, 0x01000010)))));
}

/// The bytes of each four numbers, in the first three quarters of the result.
HWY_INLINE Vector bytesOfSextets(Vector sextets) {
    const auto pair = hn::BitCast(pairs, sextets);
    const auto twelveBits =
        hn::And(hn::Or(hn::ShiftLeft<6>(pair), hn::ShiftRight<8>(pair)), hn::Set(pairs, 0x0FFF));
    const auto word = hn::BitCast(words, twelveBits);
    const auto group = hn::Or(hn::ShiftLeft<12>(word), hn::ShiftRight<16>(word));
    alignas(16) static constexpr std::uint8_t bytes[16] = {2, 1,  0,  6,  5,  4,  10, 9,
                                                           8, 14, 13, 12, 15, 15, 15, 15};
    return gatherWords(hn::TableLookupBytes(hn::BitCast(octets, group), hn::LoadDup128(octets, bytes)));
}

std::size_t encode(const char* bytes, std::size_t size, char* out) {
    std::size_t taken = 0;
    for (; size - taken >= lanes; taken += lanes / 4 * 3, out += lanes) {
        const Vector sextets = sextetsOfBytes(hn::LoadU(octets, asOctets(bytes + taken)));
        hn::StoreU(charactersOf(sextets), octets, asOctets(out));
    }
    return taken;
}

std::size_t decode(const char* text, std::size_t size, char* out) {
    constexpr hn::Half<Octets> half;
    constexpr hn::Half<decltype(half)> quarter;
    std::size_t taken = 0;
    for (; size - taken >= lanes; taken += lanes, out += lanes / 4 * 3) {
        Vector refused = hn::Zero(octets);
        const Vector sextets = sextetsOf(hn::LoadU(octets, asOctets(text + taken)), refused);
        if (!isZero(refused))
            break;
        const Vector bytes = bytesOfSextets(sextets);
        hn::StoreU(hn::LowerHalf(half, bytes), half, asOctets(out));
        hn::StoreU(hn::LowerHalf(quarter, hn::UpperHalf(half, bytes)), quarter, asOctets(out + lanes / 2));
    }
    return taken;
}

#endif

constexpr std::size_t block = 64;

/// The copies of a block end at most this far behind its start.
constexpr std::size_t reach = 2 * block + 2;

HWY_INLINE void copyBlock(char* out, const char* in) {
#pragma GCC unroll 4
    for (std::size_t i = 0; i < block; i += lanes)
        hn::StoreU(hn::LoadU(octets, asOctets(in + i)), octets, asOctets(out + i));
}

/// One bit for each character of a block that equals `wanted`, for the first in bit 0.
HWY_INLINE std::uint64_t positionsOf(char wanted, const char* in) {
    const Vector value = hn::Set(octets, static_cast<std::uint8_t>(wanted));
#if HWY_ARCH_ARM_A64
    // These processors have no instruction for this. Pairs of bytes with one bit each are added three times.
    alignas(16) static constexpr std::uint8_t bitOfLane[16] = {1, 2, 4, 8, 16, 32, 64, 128,
                                                               1, 2, 4, 8, 16, 32, 64, 128};
    const Vector bit = hn::LoadU(octets, bitOfLane);
    uint8x16_t found[4];
#pragma GCC unroll 4
    for (std::size_t i = 0; i < 4; ++i)
        found[i] = hn::IfThenElseZero(hn::Eq(hn::LoadU(octets, asOctets(in + i * lanes)), value), bit).raw;
    const uint8x16_t quads = vpaddq_u8(vpaddq_u8(found[0], found[1]), vpaddq_u8(found[2], found[3]));
    return vgetq_lane_u64(vreinterpretq_u64_u8(vpaddq_u8(quads, quads)), 0);
#else
    std::uint64_t positions = 0;
#pragma GCC unroll 4
    for (std::size_t i = 0; i < block; i += lanes) {
        std::uint8_t bytes[8] = {};
        hn::StoreMaskBits(octets, hn::Eq(hn::LoadU(octets, asOctets(in + i)), value), bytes);
        std::uint64_t bits = 0;
        std::memcpy(&bits, bytes, lanes / 8);
        positions |= bits << i;
    }
    return positions;
#endif
}

HWY_INLINE std::size_t countOf(std::uint64_t bits) {
    return static_cast<std::size_t>(__builtin_popcountll(bits));
}

/// The index of the first bit that is set. Without any, one that is also behind the block if a character is
/// left out.
HWY_INLINE std::size_t firstOf(std::uint64_t bits) {
    const auto last = std::uint64_t{1} << (block - 1);
    const auto index =
        static_cast<std::size_t>(__builtin_ctzll(bits | last)); // not a branch, which would be mispredicted
    return index + (bits == 0 ? 2 : 0);
}

/// With more escapes than this in a block, one character after the other is faster than a copy for each
/// escape.
constexpr std::size_t mostCopies = 8;

/// Copies a block without the characters in `left`. Changes up to 64 characters behind them.
HWY_INLINE char* copyBlockWithout(char* out, const char* in, std::uint64_t left) {
    const std::size_t count = countOf(left);
    char* const end = out + (block - count);
    if (count > mostCopies) {
        for (std::size_t i = 0; i < block; ++i) {
            *out = in[i];
            out += ~left >> i & 1;
        }
        return end;
    }
    // Each copy is of a whole block and starts behind a character that is left out. Most blocks have at most
    // two, and a prediction of their number would fail often.
    copyBlock(out, in);
    for (std::size_t copies = 0; copies < 2 || left != 0; ++copies) {
        const std::size_t index = firstOf(left);
        copyBlock(out + index - copies, in + index + 1);
        left &= left - 1;
    }
    return end;
}

/// Copies a block with a backslash before the characters in `escaped`. Changes up to 66 characters behind
/// them.
HWY_INLINE char* copyBlockWith(char* out, const char* in, std::uint64_t escaped) {
    const std::size_t count = countOf(escaped);
    char* const end = out + (block + count);
    if (count > mostCopies) {
        for (std::size_t i = 0; i < block; ++i) {
            *out = '\\';
            out += escaped >> i & 1;
            *out++ = in[i];
        }
        return end;
    }
    copyBlock(out, in);
    for (std::size_t copies = 0; copies < 2 || escaped != 0; ++copies) {
        const std::size_t index = firstOf(escaped);
        out[index + copies] = '\\';
        copyBlock(out + index + copies + 1, in + index);
        escaped &= escaped - 1;
    }
    return end;
}

CopiedText copyBlocksWithoutEscapes(const char* text, std::size_t size, char* out) {
    CopiedText copied{.taken = 0, .written = 0};
    for (; size - copied.taken >= reach; copied.taken += block) {
        const char* const in = text + copied.taken;
        Vector refused = hn::Zero(octets);
#pragma GCC unroll 4
        for (std::size_t i = 0; i < block; i += lanes) {
            const Vector characters = hn::LoadU(octets, asOctets(in + i));
            const Vector next = hn::LoadU(octets, asOctets(in + i + 1));
            const auto quote = hn::VecFromMask(octets, hn::Eq(characters, hn::Set(octets, '"')));
            const auto backslash = hn::VecFromMask(octets, hn::Eq(characters, hn::Set(octets, '\\')));
            const auto slashFollows = hn::VecFromMask(octets, hn::Eq(next, hn::Set(octets, '/')));
            refused = hn::Or(refused, hn::Or(quote, hn::AndNot(slashFollows, backslash)));
        }
        if (!isZero(refused))
            break;
        const char* const end = copyBlockWithout(out + copied.written, in, positionsOf('\\', in));
        copied.written = static_cast<std::size_t>(end - out);
    }
    return copied;
}

CopiedText copyBlocksWithEscapes(const char* text, std::size_t size, char* out) {
    CopiedText copied{.taken = 0, .written = 0};
    for (; size - copied.taken >= reach; copied.taken += block) {
        const char* const in = text + copied.taken;
        const char* const end = copyBlockWith(out + copied.written, in, positionsOf('/', in));
        copied.written = static_cast<std::size_t>(end - out);
    }
    return copied;
}

/// Copies the blocks, and then the characters behind them in memory that has room for whole blocks.
template <CopiedText (*copyBlocks)(const char*, std::size_t, char*)>
HWY_INLINE CopiedText copyAll(const char* text, std::size_t size, char* out) {
    CopiedText copied = copyBlocks(text, size, out);
    const std::size_t rest = size - copied.taken;
    if (rest >= reach)
        return copied; // before a block with anything else
    char padded[reach + 2 * block] = {};
    std::memcpy(padded, text + copied.taken, rest);
    const std::size_t whole = (rest + block - 1) / block * block;
    char copy[2 * (reach + block) + reach];
    CopiedText last = copyBlocks(padded, whole + reach - block, copy);
    if (last.taken == whole) {
        last.taken -= whole - rest;
        last.written -= whole - rest;
    }
    std::memcpy(out + copied.written, copy, last.written);
    return {.taken = copied.taken + last.taken, .written = copied.written + last.written};
}

CopiedText copyWithoutSlashEscapes(const char* text, std::size_t size, char* out) {
    return copyAll<copyBlocksWithoutEscapes>(text, size, out);
}

CopiedText copyWithSlashEscapes(const char* text, std::size_t size, char* out) {
    return copyAll<copyBlocksWithEscapes>(text, size, out);
}

#endif

} // namespace tavel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tavel {

namespace {

std::size_t takeNothing(const char*, std::size_t, char*) {
    return 0;
}

CopiedText copyNothing(const char*, std::size_t, char*) {
    return {};
}

bool always() {
    return true;
}

#if HWY_ARCH_X86
bool hasAvx512() {
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
           __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512bw") != 0;
}

bool hasAvx2() {
    return __builtin_cpu_supports("avx2") != 0;
}

bool hasSse4() {
    return __builtin_cpu_supports("sse4.2") != 0 && __builtin_cpu_supports("popcnt") != 0;
}
#endif

constexpr Base64Blocks allBlocks[] = {
#if HWY_TARGETS & HWY_AVX3
    {"AVX-512", hasAvx512, N_AVX3::encode, N_AVX3::decode, N_AVX3::copyWithoutSlashEscapes,
     N_AVX3::copyWithSlashEscapes},
#endif
#if HWY_TARGETS & HWY_AVX2
    {"AVX2", hasAvx2, N_AVX2::encode, N_AVX2::decode, N_AVX2::copyWithoutSlashEscapes,
     N_AVX2::copyWithSlashEscapes},
#endif
#if HWY_TARGETS & HWY_SSE4
    {"SSE4", hasSse4, N_SSE4::encode, N_SSE4::decode, N_SSE4::copyWithoutSlashEscapes,
     N_SSE4::copyWithSlashEscapes},
#endif
#if HWY_TARGETS & HWY_NEON
    {"NEON", always, N_NEON::encode, N_NEON::decode, N_NEON::copyWithoutSlashEscapes,
     N_NEON::copyWithSlashEscapes},
#endif
    {"none", always, takeNothing, takeNothing, copyNothing, copyNothing},
};

} // namespace

std::span<const Base64Blocks> base64Blocks() {
    return allBlocks;
}

} // namespace tavel

#endif
