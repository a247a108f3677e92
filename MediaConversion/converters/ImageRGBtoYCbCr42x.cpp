#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>

#include <MediaConversion/converters/RowConversion.h>

namespace MediaConversion {

const ImageRGBtoYCbCr42x::ConversionTable ImageRGBtoYCbCr42x::yccConversion =
    tableOfKernels<ImageRGBtoYCbCr42x::ConversionTable>(&Kernels::subsampling);

} // namespace MediaConversion
