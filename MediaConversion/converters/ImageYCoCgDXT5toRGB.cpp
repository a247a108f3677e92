#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <MediaConversion/converters/RowDecoding.h>

namespace MediaConversion {

const ImageYCoCgDXT5toRGB::ConversionTable ImageYCoCgDXT5toRGB::rgbConversion =
    tableOfRowDecoders<ConversionTable>(&Kernels::decompression);

} // namespace MediaConversion
