// Which transfer function a picture's samples go through on their way to the writer.
#pragma once

#include "Picture.h"

#include <host/EmbeddedHost.h>

#include <string>

namespace ZetTool {

/// What the user asks for. Auto takes scene-linear pictures to sRGB and hands on display-referred ones
/// untouched.
enum class TransferChoice { Auto, None, Srgb, Rec709 };

/// The choice called "auto", "none", "srgb" or "rec709". Throws std::runtime_error that lists them.
TransferChoice parseTransferChoice(const std::string& name);

/// A picture is scene-linear when its colour-space tag says so ("Linear", "scene_linear", "lin_..."); without
/// a tag, when its samples are floats.
EmbeddedHost::Transfer chooseTransfer(TransferChoice choice, const PictureHeader& header);

/// What to say of it behind a picture's size: ", linear to sRGB", or nothing where samples stay as they are.
std::string transferNote(EmbeddedHost::Transfer transfer);

} // namespace ZetTool
