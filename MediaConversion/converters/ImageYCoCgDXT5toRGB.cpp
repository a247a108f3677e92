#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <MediaConversion/converters/RowConversion.h>

namespace MediaConversion {

const ImageYCoCgDXT5toRGB::ConversionTable ImageYCoCgDXT5toRGB::rgbConversion =
    tableOfKernels<ConversionTable>(&Kernels::decompression);

} // namespace MediaConversion
