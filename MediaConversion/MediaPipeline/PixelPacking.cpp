#include <MediaConversion/MediaPipeline/PixelPacking.h>

#include <tuple>

namespace {

auto asTuple(PixelPacking const& packing) {
    return std::tuple(packing.bytes(), packing.samples(), packing.pixels().rows, packing.pixels().columns);
}

} // namespace

bool PixelPacking::operator<(PixelPacking const& other) const { return asTuple(*this) < asTuple(other); }

bool PixelPacking::operator==(PixelPacking const& other) const { return asTuple(*this) == asTuple(other); }

std::string PixelPacking::toString(PixelPacking const& packing) {
    return std::to_string(packing.bytes()) + "," + std::to_string(packing.samples()) + "," +
           std::to_string(packing.pixels().rows) + "x" + std::to_string(packing.pixels().columns);
}
