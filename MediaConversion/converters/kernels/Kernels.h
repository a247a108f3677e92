// The kernels of the conversions, compiled once for each instruction set.
//
// A kernel converts one row of blocks and knows of nothing else. Its source is written once, over vectors
// whose width the instruction set gives (Vectors.h). The unit of a set (KernelsAvx2.cpp and so on) compiles
// all of it inside a region for that set's instructions; everything there has internal linkage, or is a
// template of types that have, so that no function with such instructions can replace one that the rest of
// the library calls.
#pragma once

#include <MediaConversion/MediaPipeline/FrameFormat.h>

#include <cstddef>
#include <cstdint>

namespace MediaConversion {

/// Makes `count` blocks from the pixels of one or several rows, of which the first starts at `pixels` and
/// each further one `rowBytes` behind the one before.
using EncodeRow = void (*)(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks, int count);

/// Makes the pixels of `count` blocks: one or several rows, of which the first starts at `pixels` and each
/// further one `rowBytes` behind the one before.
using DecodeRow = void (*)(std::uint8_t const* blocks, std::uint8_t* pixels, std::size_t rowBytes, int count);

/// A row of the tables of conversions.
template <class ConvertRow>
struct Conversion {
    Zentrel::FrameFormat (*source)();
    Zentrel::FrameFormat (*destination)();
    ConvertRow convertRow;
};
using RowEncoder = Conversion<EncodeRow>;
using RowDecoder = Conversion<DecodeRow>;

/// A table, whose rows stand in the same order for all instruction sets.
template <class ConvertRow>
struct Conversions {
    Conversion<ConvertRow> const* rows;
    int count;
};

struct Kernels {
    Conversions<EncodeRow> packing, subsampling, compression;
    Conversions<DecodeRow> unpacking, upsampling, decompression;
};

extern Kernels const plainKernels, avx2Kernels, avx512Kernels;

/// Those of the instruction set in use.
Kernels const& currentKernels();

} // namespace MediaConversion
