#include <MediaConversion/converters/ImageToPackedFrame.h>

#include <MediaConversion/converters/RowEncoding.h>

namespace MediaConversion {

const ImageToPackedFrame::ConversionTable ImageToPackedFrame::packingConversion =
    tableOfRowEncoders<ImageToPackedFrame::ConversionTable>(&Kernels::packing);

} // namespace MediaConversion
