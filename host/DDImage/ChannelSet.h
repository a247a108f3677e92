// The channels that a writer sees, and sets of them.
#pragma once

#include <initializer_list>

namespace DD::Image {

enum Channel { Chan_Red, Chan_Green, Chan_Blue, Chan_Alpha };

inline constexpr int channelCount = 4;

class ChannelSet {
public:
    constexpr ChannelSet() = default;
    constexpr ChannelSet(std::initializer_list<Channel> channels) {
        for (const Channel channel : channels)
            *this += channel;
    }

    constexpr ChannelSet& operator+=(Channel channel) {
        bits |= 1u << channel;
        return *this;
    }

    constexpr bool contains(Channel channel) const { return (bits & 1u << channel) != 0; }
    /// Every channel of `other` is in this set.
    constexpr bool contains(const ChannelSet& other) const { return (other.bits & ~bits) == 0; }

private:
    unsigned bits = 0;
};

inline constexpr ChannelSet Mask_RGB{Chan_Red, Chan_Green, Chan_Blue};
inline constexpr ChannelSet Mask_RGBA{Chan_Red, Chan_Green, Chan_Blue, Chan_Alpha};

} // namespace DD::Image
