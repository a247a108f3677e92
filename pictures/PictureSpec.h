// What OpenImageIO says of a picture, as the writer's input needs it.
#pragma once

#include "Picture.h"

#include <OpenImageIO/imageio.h>

namespace ZetTool {

PictureHeader describe(const OIIO::ImageSpec& spec);

/// The channels that a writer is to see: those called R, G, B and A, else the first ones; -1 for an alpha
/// that is not there.
Picture::ChannelPlaces findChannels(const OIIO::ImageSpec& spec);

} // namespace ZetTool
