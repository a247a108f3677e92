#include "DecodedFrame.h"

#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>

#include <pictures/FormatChoice.h>
#include <pictures/FrameConversion.h>

#include <stdexcept>

namespace ZetTool {
namespace {

using Zentrel::FrameFormat;
using Zentrel::FullFrameFormat;

MediaFileInfo infoOf(const std::filesystem::path& file) {
    const FoundFile found = inspect(file);
    if (!found.info)
        throw std::runtime_error(found.fault);
    return *found.info;
}

FrameFormat decodedFormat(const FrameFormat& format) {
    return bitsOf(format) == 8 ? FullFrameFormat::BGRA_U8() : FullFrameFormat::BGRA_F32();
}

} // namespace

DecodedFrame::DecodedFrame(const std::filesystem::path& file) : about(infoOf(file)) {
    MediaConversion::FileStreamFactory streams;
    frame = convertFrame(MediaConversion::ZentrelMediaFileReader(streams).readFrame(file),
                         decodedFormat(about.format));
}

} // namespace ZetTool
