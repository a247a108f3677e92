#include <MediaConversion/converters/ImageToPackedFrame.h>

namespace MediaConversion {

const ImageToPackedFrame::ConversionTable ImageToPackedFrame::packingConversion;

} // namespace MediaConversion
