#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>

#include <MediaConversion/converters/RowConversion.h>

#include <stdexcept>
#include <string>

namespace MediaConversion {

namespace {

using Table = ImageRGBtoYCoCgDXT5::ConversionTable;
using Zentrel::FrameFormat;
using Zentrel::FullFrame;

/// The conversion, which refuses any other destination.
Table::mapped_type onlyTo(FrameFormat const& supported, Table::mapped_type const& conversion) {
    return [=](FullFrame const& source, FrameFormat const& destination) {
        bool const isDxt1 = supported == Zentrel::PackedFrameFormat::RGB_DXT1_U8();
        if (destination != supported)
            throw std::runtime_error(
                std::string(isDxt1 ? "DXT1" : "DXT5") + " conversion destination format only supports " +
                FrameFormat::toString(supported) + ", no support for  " + FrameFormat::toString(destination));
        return conversion(source, destination);
    };
}

} // namespace

const Table ImageRGBtoYCoCgDXT5::yccConversion = [] {
    auto table = tableOfKernels<Table>(&Kernels::compression);
    for (auto& [formats, conversion] : table)
        conversion = onlyTo(std::get<1>(formats), conversion);
    return table;
}();

} // namespace MediaConversion
