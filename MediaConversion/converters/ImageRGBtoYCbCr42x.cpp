#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>

namespace MediaConversion {

const ImageRGBtoYCbCr42x::ConversionTable ImageRGBtoYCbCr42x::yccConversion;

} // namespace MediaConversion
