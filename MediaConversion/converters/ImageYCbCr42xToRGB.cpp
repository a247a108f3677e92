#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>

#include <MediaConversion/converters/RowConversion.h>

namespace MediaConversion {

const ImageYCbCr42xToRGB::ConversionTable ImageYCbCr42xToRGB::rgbConversion =
    tableOfKernels<ConversionTable>(&Kernels::upsampling);

} // namespace MediaConversion
