// What OpenImageIO looks for by name in a plug-in for the format "zet".
#include "ImageFormat.h"

extern "C" {

OIIO_EXPORT int zet_imageio_version = OIIO_PLUGIN_VERSION;
OIIO_EXPORT const char* zet_imageio_library_version() { return ZetImageIo::libraryVersion(); }

OIIO_EXPORT OIIO::ImageInput* zet_input_imageio_create() { return ZetImageIo::createInput(); }
OIIO_EXPORT OIIO::ImageOutput* zet_output_imageio_create() { return ZetImageIo::createOutput(); }

OIIO_EXPORT const char* zet_input_extensions[] = {"zet", "z9zt", "9zt", nullptr};
OIIO_EXPORT const char* zet_output_extensions[] = {"zet", "z9zt", "9zt", nullptr};
}
