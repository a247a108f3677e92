#include <host/PictureInput.h>

#include <algorithm>
#include <array>
#include <exception>
#include <stdexcept>
#include <utility>

namespace EmbeddedHost {

namespace {

constexpr std::array<std::pair<DD::Image::Channel, PictureChannel>, DD::Image::channelCount> pictureChannels{{
    {DD::Image::Chan_Red, PictureChannel::Red},
    {DD::Image::Chan_Green, PictureChannel::Green},
    {DD::Image::Chan_Blue, PictureChannel::Blue},
    {DD::Image::Chan_Alpha, PictureChannel::Alpha},
}};

} // namespace

PictureInput::PictureInput(PictureSource& source)
    : picture(source), pictureInfo(DD::Image::Format(source.width(), source.height())) {}

void PictureInput::request(int x, int y, int r, int t, const DD::Image::ChannelSet& channels, int) {
    requested = {x, y, r, t, channels};
}

void PictureInput::read(int y, int x, int r, const DD::Image::ChannelSet& channels, DD::Image::Row& row) {
    const bool rowRequested = y >= requested.y && y < requested.t;
    const bool columnsRequested = x >= requested.x && r <= requested.r;
    if (!rowRequested || !columnsRequested || !requested.channels.contains(channels))
        throw std::logic_error("Row " + std::to_string(y) + ", columns " + std::to_string(x) + " to " +
                               std::to_string(r) + " were read but not requested");

    for (const auto& [channel, source] : pictureChannels) {
        if (!channels.contains(channel))
            continue;
        float* const samples = row.writable(channel) + x;
        if (channel == DD::Image::Chan_Alpha && !picture.hasAlpha()) {
            std::fill_n(samples, r - x, 0.0f);
            continue;
        }
        try {
            picture.readRow(y, x, r, source, samples);
        } catch (const std::exception& exception) {
            throw PictureFailure{exception.what()};
        }
    }
}

} // namespace EmbeddedHost
