#include "Picture.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <system_error>

namespace ZetTool {

std::string PictureSize::text() const { return std::to_string(width) + "x" + std::to_string(height); }

PictureSize parseSize(const std::string& text) {
    PictureSize size;
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec == std::errc{} && width.ptr != end && *width.ptr == 'x') {
        const auto height = std::from_chars(width.ptr + 1, end, size.height);
        if (height.ec == std::errc{} && height.ptr == end)
            return size;
    }
    throw std::runtime_error("cannot read size \"" + text + "\": expected WIDTHxHEIGHT, as in 1920x1080");
}

Picture::Picture(PictureHeader header, PixelBlock pixels, ChannelPlaces channelPlaces)
    : about(std::move(header)), block(std::move(pixels)), places(channelPlaces) {}

void Picture::readRow(int y, int x, int r, EmbeddedHost::PictureChannel channel, float* to) {
    const int row = height() - 1 - y - block.top; // the writer counts rows from the bottom
    const int inside = row >= 0 && row < block.size.height;
    const int first = inside ? std::clamp(block.left, x, r) : r;
    const int last = inside ? std::clamp(block.left + block.size.width, first, r) : r;

    const auto stride = static_cast<std::ptrdiff_t>(block.channels);
    to = std::fill_n(to, first - x, 0.0f);
    if (first < last) {
        const float* from =
            block.samples.get() +
            (static_cast<std::ptrdiff_t>(row) * block.size.width + first - block.left) * stride +
            places[static_cast<std::size_t>(channel)];
        for (int column = first; column < last; ++column, from += stride)
            *to++ = *from;
    }
    std::fill_n(to, r - last, 0.0f);
}

} // namespace ZetTool
