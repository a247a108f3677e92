#include "FormatChoice.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <stdexcept>

namespace ZetTool {

using Zentrel::FrameFormat;

const OutputFormat& findOutputFormat(const std::string& name) {
    for (std::size_t index = 0; index < outputFormats.size(); ++index) {
        const OutputFormat& output = outputFormats[index];
        if (name == output.label || name == output.shortName || name == std::to_string(index))
            return output;
    }
    throw std::runtime_error(
        fmt::format("unknown format \"{}\"; the formats are\n{}", name, listOutputFormats()));
}

std::string listOutputFormats() {
    std::string table;
    for (std::size_t index = 0; index < outputFormats.size(); ++index)
        table += fmt::format("  {}  {:<7} \"{}\"\n", index, outputFormats[index].shortName,
                             outputFormats[index].label);
    table.pop_back();
    return table;
}

const OutputFormat& closestOutputFormat(const FrameFormat& format) {
    using F = Zentrel::FullFrameFormat;
    using P = Zentrel::PackedFrameFormat;
    static const std::map<FrameFormat, FrameFormat> others{{F::BGR_U8(), F::RGB_U8()},
                                                           {F::BGRA_U8(), F::RGBA_U8()},
                                                           {P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10()},
                                                           {P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()},
                                                           {P::RGB_DXT1_U8(), P::YCOCG_DXT5_U8()}};
    const auto other = others.find(format);
    const FrameFormat& written = other == others.end() ? format : other->second;
    const auto found = std::find_if(outputFormats.begin(), outputFormats.end(),
                                    [&](const OutputFormat& output) { return output.format() == written; });
    if (found == outputFormats.end())
        throw std::runtime_error("no output format is like " + FrameFormat::toString(format));
    return *found;
}

bool holdsAlpha(const FrameFormat& format) {
    using Zentrel::Colourspace;
    return format.colourspace == Colourspace::RGBA || format.colourspace == Colourspace::YCbCrA_ITU_T871;
}

int bitsOf(const FrameFormat& format) {
    switch (format.channelType) {
    case Zentrel::ChannelType::U8:
        return 8;
    case Zentrel::ChannelType::U10:
        return 10;
    default: // media files hold none that are deeper
        return 12;
    }
}

} // namespace ZetTool
