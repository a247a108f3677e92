#include <MediaConversion/converters/ImageToFullFrame.h>

#include <MediaConversion/converters/RowConversion.h>

namespace MediaConversion {

const ImageToFullFrame::ConversionTable ImageToFullFrame::packingConversion =
    tableOfKernels<ConversionTable>(&Kernels::unpacking);

} // namespace MediaConversion
