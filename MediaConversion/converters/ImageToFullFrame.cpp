#include <MediaConversion/converters/ImageToFullFrame.h>

#include <MediaConversion/converters/RowDecoding.h>

namespace MediaConversion {

const ImageToFullFrame::ConversionTable ImageToFullFrame::packingConversion =
    tableOfRowDecoders<ConversionTable>(&Kernels::unpacking);

} // namespace MediaConversion
