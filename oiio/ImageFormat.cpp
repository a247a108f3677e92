#include "ImageFormat.h"

#include "MediaFileInput.h"
#include "MediaFileOutput.h"

#include <MediaConversion/Version.h>

#include <mutex>
#include <string>

namespace ZetImageIo {

OIIO::ImageInput* createInput() { return new MediaFileInput; }

OIIO::ImageOutput* createOutput() { return new MediaFileOutput; }

const char* libraryVersion() {
    static const std::string text = std::string("MediaConversion ") + MediaConversion::Version::fullVersion();
    return text.c_str();
}

void declareInput() {
    static std::once_flag declared;
    std::call_once(declared, [] {
        OIIO::get_string_attribute(
            "format_list"); // its own formats first: it looks for them while it has none
        OIIO::declare_imageio_format(formatName, createInput, extensions, nullptr, nullptr, libraryVersion());
    });
}

} // namespace ZetImageIo
