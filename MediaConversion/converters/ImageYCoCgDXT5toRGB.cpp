#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

namespace MediaConversion {

const ImageYCoCgDXT5toRGB::ConversionTable ImageYCoCgDXT5toRGB::rgbConversion;

} // namespace MediaConversion
