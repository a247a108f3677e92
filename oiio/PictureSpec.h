// What OpenImageIO says of a picture, as the writer's input needs it.
#pragma once

#include <OpenImageIO/imageio.h>
#include <pictures/Picture.h>

#include <utility>

namespace ZetImageIo {

ZetTool::PictureHeader describe(const OIIO::ImageSpec& spec);

/// The channels that a writer is to see: those called R, G, B and A, else the first ones; -1 for an alpha
/// that is not there.
ZetTool::Picture::ChannelPlaces findChannels(const OIIO::ImageSpec& spec);

/// The smallest run of channels that holds all of these, as begin and end. Of a picture with many layers only
/// this run is read.
std::pair<int, int> channelRun(const ZetTool::Picture::ChannelPlaces& places);

/// The block that the picture is read into, without memory yet.
ZetTool::PixelBlock blockOf(const OIIO::ImageSpec& spec);

} // namespace ZetImageIo
