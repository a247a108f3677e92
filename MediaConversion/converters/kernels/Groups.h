// Rows of blocks in groups that fill the vectors.
#pragma once

#include <MediaConversion/converters/kernels/BlockWords.h>

#include <algorithm>
#include <cstring>

namespace MediaConversion {
namespace {

/// Has the processor load what will be read soon. The address may lie behind the picture, where a pointer may
/// not.
inline void fetch(std::uint8_t const* bytes, std::size_t ahead) {
    __builtin_prefetch(reinterpret_cast<void const*>(reinterpret_cast<std::uintptr_t>(bytes) + ahead));
}

/// A `Group` encodes a number of blocks at once and names it (`blocks`), the rows of pixels that a block has
/// and the bytes of each of them (`rows`, `blockRowBytes`), the bytes that it reads of each row (`readBytes`,
/// which may be more) and the bytes that a block takes (`bytes`). Flattened: only with everything in one
/// function the compilers keep the vectors in registers.
template <class Group>
[[gnu::flatten]] void encodeGroups(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks,
                                   int groups) {
    constexpr int groupBytes = Group::blocks * Group::blockRowBytes, fetchedAhead = 2048;
    for (; groups > 0; --groups, pixels += groupBytes, blocks += Group::blocks * Group::bytes) {
        for (int row = 0; row < Group::rows; ++row)
            for (int byte = 0; byte < groupBytes; byte += 64)
                fetch(pixels + row * rowBytes + byte, fetchedAhead);
        Group::encode(pixels, rowBytes, blocks);
    }
}

/// An `EncodeRow`.
template <class Group>
void encodeInGroups(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks, int count) {
    constexpr int groupBytes = Group::blocks * Group::blockRowBytes;
    constexpr int tooMuch = Group::readBytes - groupBytes;
    static_assert(tooMuch < groupBytes + Group::blockRowBytes);
    // Nothing behind the row is read.
    auto const groups = static_cast<int>(
        std::max<std::ptrdiff_t>(0, std::ptrdiff_t{count} * Group::blockRowBytes - tooMuch) / groupBytes);
    int const encoded = groups * Group::blocks, rest = count - encoded;
    encodeGroups<Group>(pixels, rowBytes, blocks, groups);
    if (rest == 0)
        return;

    // The rest, at most two groups, is encoded elsewhere.
    std::uint8_t lastPixels[Group::rows * 2 * groupBytes + tooMuch] = {};
    std::uint8_t lastBlocks[2 * Group::blocks * Group::bytes];
    for (int row = 0; row < Group::rows; ++row)
        std::memcpy(lastPixels + row * 2 * groupBytes,
                    pixels + row * rowBytes + std::ptrdiff_t{encoded} * Group::blockRowBytes,
                    rest * Group::blockRowBytes);
    encodeGroups<Group>(lastPixels, 2 * groupBytes, lastBlocks, rest > Group::blocks ? 2 : 1);
    std::memcpy(blocks + std::ptrdiff_t{encoded} * Group::bytes, lastBlocks, rest * Group::bytes);
}

/// A `DecodeRow`. A `Group` decodes a number of blocks at once and names it (`blocks`), the bytes that they
/// take (`bytes`) and those that it reads behind them (`bytesBehind`), the rows of pixels that a block has
/// (`rows`) and the bytes of each of them that it makes (`pixelBytes`).
template <class Group>
void decodeInGroups(std::uint8_t const* blocks, std::uint8_t* pixels, std::size_t rowBytes, int count) {
    constexpr int blockBytes = Group::bytes / Group::blocks,
                  blockPixelBytes = Group::pixelBytes / Group::blocks;
    auto const groups = static_cast<int>(
        std::max<std::ptrdiff_t>(std::ptrdiff_t{count} * blockBytes - Group::bytesBehind, 0) / Group::bytes);
    Group::decode(blocks, pixels, rowBytes, groups);

    // Nothing behind the row is read: the rest is decoded elsewhere.
    for (int decoded = groups * Group::blocks; decoded < count; decoded += Group::blocks) {
        int const rest = std::min(count - decoded, Group::blocks);
        std::uint8_t lastBlocks[Group::bytes + Group::bytesBehind] = {};
        std::uint8_t lastPixels[Group::rows * Group::pixelBytes];
        std::memcpy(lastBlocks, blocks + std::ptrdiff_t{decoded} * blockBytes, rest * blockBytes);
        Group::decode(lastBlocks, lastPixels, Group::pixelBytes, 1);
        for (int row = 0; row < Group::rows; ++row)
            std::memcpy(pixels + row * rowBytes + std::ptrdiff_t{decoded} * blockPixelBytes,
                        lastPixels + row * Group::pixelBytes, rest * blockPixelBytes);
    }
}

} // namespace
} // namespace MediaConversion
