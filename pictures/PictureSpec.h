// What OpenImageIO says of a picture, as the writer's input needs it.
#pragma once

#include "Picture.h"

#include <OpenImageIO/imageio.h>

#include <utility>

namespace ZetTool {

PictureHeader describe(const OIIO::ImageSpec& spec);

/// The channels that a writer is to see: those called R, G, B and A, else the first ones; -1 for an alpha
/// that is not there.
Picture::ChannelPlaces findChannels(const OIIO::ImageSpec& spec);

/// The smallest run of channels that holds all of these, as begin and end. Of a picture with many layers only
/// this run is read.
std::pair<int, int> channelRun(const Picture::ChannelPlaces& places);

/// The block that the picture is read into, without memory yet.
PixelBlock blockOf(const OIIO::ImageSpec& spec);

} // namespace ZetTool
