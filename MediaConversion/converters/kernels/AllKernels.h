// All kernels, for the instruction set of the unit that includes this.
#pragma once

#include <MediaConversion/converters/kernels/Compression.h>
#include <MediaConversion/converters/kernels/Decompression.h>
#include <MediaConversion/converters/kernels/Packing.h>
#include <MediaConversion/converters/kernels/Subsampling.h>
#include <MediaConversion/converters/kernels/Unpacking.h>
#include <MediaConversion/converters/kernels/Upsampling.h>

namespace MediaConversion {
namespace {

constexpr Kernels allKernels{
    {packing.rows, std::size(packing.rows)}, {subsampling, std::size(subsampling)},
    {compression, std::size(compression)},   {unpacking.rows, std::size(unpacking.rows)},
    {upsampling, std::size(upsampling)},     {decompression, std::size(decompression)},
};

} // namespace
} // namespace MediaConversion
