#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>

#include <MediaConversion/converters/RowEncoding.h>

namespace MediaConversion {

const ImageRGBtoYCbCr42x::ConversionTable ImageRGBtoYCbCr42x::yccConversion =
    tableOfRowEncoders<ImageRGBtoYCbCr42x::ConversionTable>(&Kernels::subsampling);

} // namespace MediaConversion
