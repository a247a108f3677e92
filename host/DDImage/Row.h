// One row of a picture, a buffer of floats for each channel.
#pragma once

#include <DDImage/ChannelSet.h>

#include <cstddef>
#include <vector>

namespace DD::Image {

class Row {
public:
    /// A row of zeros for columns `x` (inclusive) to `r` (exclusive).
    Row(int x, int r) : left(x), width(r - x), samples(static_cast<std::size_t>(width) * channelCount) {}

    /// The samples of a channel, indexed by column: the first one stands at index `x`.
    const float* operator[](Channel channel) const { return samples.data() + offset(channel); }
    float* writable(Channel channel) { return samples.data() + offset(channel); }

private:
    std::ptrdiff_t offset(Channel channel) const { return std::ptrdiff_t{width} * channel - left; }

    int left;
    int width;
    std::vector<float> samples;
};

} // namespace DD::Image
