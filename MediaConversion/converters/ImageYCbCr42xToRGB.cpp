#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>

namespace MediaConversion {

const ImageYCbCr42xToRGB::ConversionTable ImageYCbCr42xToRGB::rgbConversion;

} // namespace MediaConversion
