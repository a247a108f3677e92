#include <MediaConversion/converters/ImageToPackedFrame.h>

#include <MediaConversion/converters/RowConversion.h>

namespace MediaConversion {

const ImageToPackedFrame::ConversionTable ImageToPackedFrame::packingConversion =
    tableOfKernels<ImageToPackedFrame::ConversionTable>(&Kernels::packing);

} // namespace MediaConversion
