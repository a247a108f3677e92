#include "PictureSpec.h"

#include <algorithm>
#include <vector>

using ZetTool::Picture;
using ZetTool::PictureHeader;
using ZetTool::PixelBlock;

namespace ZetImageIo {

Picture::ChannelPlaces findChannels(const OIIO::ImageSpec& spec) {
    const auto named = [&](const char* name) {
        const auto& names = spec.channelnames;
        const auto found = std::find(names.begin(), names.end(), name);
        return found == names.end() ? -1 : static_cast<int>(found - names.begin());
    };
    int alpha = named("A");
    if (alpha < 0 && spec.alpha_channel < spec.nchannels)
        alpha = spec.alpha_channel;

    const Picture::ChannelPlaces byName{named("R"), named("G"), named("B"), alpha};
    if (*std::min_element(byName.begin(), byName.end() - 1) >= 0)
        return byName;

    std::vector<int> colours;
    for (int channel = 0; channel < spec.nchannels; ++channel)
        if (channel != alpha)
            colours.push_back(channel);
    if (colours.empty()) // a matte alone: shown as grey
        return {alpha, alpha, alpha, -1};
    if (colours.size() < 3)
        return {colours[0], colours[0], colours[0], alpha};
    return {colours[0], colours[1], colours[2], alpha};
}

std::pair<int, int> channelRun(const Picture::ChannelPlaces& places) {
    const bool hasAlpha = places.back() >= 0;
    const auto [first, last] =
        std::minmax_element(places.begin(), hasAlpha ? places.end() : places.end() - 1);
    return {*first, *last + 1};
}

PixelBlock blockOf(const OIIO::ImageSpec& spec) {
    const auto [begin, end] = channelRun(findChannels(spec));
    return {spec.x - spec.full_x,
            spec.y - spec.full_y,
            {spec.width, spec.height},
            end - begin,
            spec.format == OIIO::TypeHalf && spec.channelformats.empty()};
}

PictureHeader describe(const OIIO::ImageSpec& spec) {
    PictureHeader header;
    header.size = {spec.full_width, spec.full_height};
    header.hasAlpha = findChannels(spec).back() >= 0;
    header.premultiplied = header.hasAlpha && spec.get_int_attribute("oiio:UnassociatedAlpha") == 0;
    header.floatSamples = spec.format.is_floating_point();
    header.bytes = blockOf(spec).bytes();
    header.colourSpace = spec.get_string_attribute("oiio:ColorSpace");
    return header;
}

} // namespace ZetImageIo
