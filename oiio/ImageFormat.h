// Media files among the image formats that OpenImageIO knows.
#pragma once

#include <OpenImageIO/imageio.h>

namespace ZetImageIo {

inline constexpr char formatName[] = "zet";
/// Ended by a null pointer.
inline const char* extensions[] = {"zet", "z9zt", "9zt", nullptr};

OIIO::ImageInput* createInput();
OIIO::ImageOutput* createOutput();
/// The library that does the work, with its version.
const char* libraryVersion();

/// Has OpenImageIO of this process read media files, as if it had found the plug-in.
void declareInput();

} // namespace ZetImageIo
