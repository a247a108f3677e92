#include <MediaConversion/converters/ImageToFullFrame.h>

namespace MediaConversion {

const ImageToFullFrame::ConversionTable ImageToFullFrame::packingConversion;

} // namespace MediaConversion
