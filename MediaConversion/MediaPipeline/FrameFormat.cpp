#include <MediaConversion/MediaPipeline/FrameFormat.h>

#include <array>
#include <tuple>

namespace Zentrel {

namespace {

constexpr std::array channelTypeNames{"U8", "U10", "U12", "U15plus1", "U16", "F32"};
constexpr std::array colourspaceNames{"RGB", "RGBA", "YCbCr_ITU_T871", "YCbCrA_ITU_T871", "YCoCg", "YCoCgA"};

/// The name of an enumerator, or a text that shows the number of a value that has none.
template <class Enumeration, std::size_t count>
std::string nameOf(Enumeration value, std::array<const char*, count> const& names, const char* enumeration) {
    auto const number = static_cast<std::uint32_t>(value);
    if (number < count)
        return names[number];
    return std::string("(Unknown ") + enumeration + " " + std::to_string(number) + ")";
}

auto asTuple(FrameFormat const& format) {
    return std::tie(format.colourspace, format.channelType, format.pixelPacking, format.layoutName);
}

} // namespace

bool FrameFormat::operator<(FrameFormat const& other) const { return asTuple(*this) < asTuple(other); }

bool FrameFormat::operator==(FrameFormat const& other) const { return asTuple(*this) == asTuple(other); }

std::string FrameFormat::toString(ChannelType channelType) {
    return nameOf(channelType, channelTypeNames, "ChannelType");
}

std::string FrameFormat::toString(Colourspace colourspace) {
    return nameOf(colourspace, colourspaceNames, "Colourspace");
}

std::string FrameFormat::toString(FrameFormat const& format) {
    return toString(format.colourspace) + "_" + toString(format.channelType) + "_" + format.layoutName;
}

} // namespace Zentrel
