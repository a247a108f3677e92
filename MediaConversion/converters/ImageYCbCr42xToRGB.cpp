#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>

#include <MediaConversion/converters/RowDecoding.h>

namespace MediaConversion {

const ImageYCbCr42xToRGB::ConversionTable ImageYCbCr42xToRGB::rgbConversion =
    tableOfRowDecoders<ConversionTable>(&Kernels::upsampling);

} // namespace MediaConversion
