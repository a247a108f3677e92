#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>

namespace MediaConversion {

const ImageRGBtoYCoCgDXT5::ConversionTable ImageRGBtoYCoCgDXT5::yccConversion;

} // namespace MediaConversion
