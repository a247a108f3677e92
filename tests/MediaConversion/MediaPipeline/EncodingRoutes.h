// What leads from each format to each other, listed by filter.
#pragma once

#include <MediaConversion/MediaPipeline/FrameFormat.h>

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

using Zentrel::FrameFormat;

/// The catalogue by the names of its functions.
inline std::map<std::string, FrameFormat> const& catalogue() {
    using F = Zentrel::FullFrameFormat;
    using P = Zentrel::PackedFrameFormat;
    static const std::map<std::string, FrameFormat> formats{
        {"RGB_U8", F::RGB_U8()},
        {"BGR_U8", F::BGR_U8()},
        {"RGB_U10", F::RGB_U10()},
        {"BGR_U10", F::BGR_U10()},
        {"RGB_U12", F::RGB_U12()},
        {"BGR_U12", F::BGR_U12()},
        {"RGB_U15plus1", F::RGB_U15plus1()},
        {"BGR_U15plus1", F::BGR_U15plus1()},
        {"RGB_U16", F::RGB_U16()},
        {"BGR_U16", F::BGR_U16()},
        {"RGB_F32", F::RGB_F32()},
        {"BGR_F32", F::BGR_F32()},
        {"RGBA_U8", F::RGBA_U8()},
        {"BGRA_U8", F::BGRA_U8()},
        {"ARGB_U8", F::ARGB_U8()},
        {"ARGB_U15plus1", F::ARGB_U15plus1()},
        {"BGRA_U16", F::BGRA_U16()},
        {"RGBA_F32", F::RGBA_F32()},
        {"BGRA_F32", F::BGRA_F32()},
        {"YCBCR_U8", F::YCBCR_ITU_T871_YCBCR_U8()},
        {"YCBCR_F32", F::YCBCR_ITU_T871_YCBCR_F32()},
        {"YCRCB_U8", F::YCBCR_ITU_T871_YCRCB_U8()},
        {"COCGAY_U8", F::YCOCGA_COCGAY_U8()},
        {"YCBCR_U10", F::YCBCR_ITU_T871_YCBCR_U10()},
        {"RGB_DPX_FILLED", P::RGB_DPX_FILLED_U10()},
        {"BGR_DPX_FILLED", P::BGR_DPX_FILLED_U10()},
        {"RGB_DPX_PACKED", P::RGB_DPX_PACKED_U12()},
        {"BGR_DPX_PACKED", P::BGR_DPX_PACKED_U12()},
        {"RGB_SMPTE_2110", P::RGB_SMPTE_2110_U12()},
        {"BGR_SMPTE_2110", P::BGR_SMPTE_2110_U12()},
        {"RGB_DXT1", P::RGB_DXT1_U8()},
        {"YUYV_422", P::YCBCR_ITU_T871_YUYV_422_U8()},
        {"9ZT_422", P::YCBCR_ITU_T871_9ZT_422_U10()},
        {"9ZT_4224", P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12()},
        {"9ZT_420", P::YCBCR_ITU_T871_9ZT_420_U8()},
        {"YCOCG_DXT5", P::YCOCG_DXT5_U8()},
    };
    return formats;
}

/// The same chain from each of the sources to each of the destinations. Where a filter has no format behind
/// it, it produces the destination.
struct Routes {
    const char* sources;
    const char* chain;
    const char* destinations;
};

inline constexpr Routes routes[] = {
    {"RGB_U8", "ConvertColourspace", "BGR_U8 RGBA_U8 BGRA_U8"},
    {"BGR_U8", "ConvertColourspace", "RGB_U8 RGBA_U8 BGRA_U8"},
    {"RGBA_U8", "ConvertColourspace", "RGB_U8 BGR_U8 BGRA_U8"},
    {"BGRA_U8", "ConvertColourspace", "RGB_U8 BGR_U8 RGBA_U8"},
    {"BGR_F32", "ConvertColourspace", "BGRA_F32"},
    {"BGRA_U8", "ConvertBitDepth", "BGRA_F32"},
    {"BGRA_F32", "ConvertBitDepth", "BGRA_U8"},
    {"RGB_U8 BGR_U8 RGBA_U8", "ConvertColourspace BGRA_U8, ConvertBitDepth", "BGRA_F32"},
    {"BGRA_F32", "ConvertBitDepth BGRA_U8, ConvertColourspace", "RGB_U8 BGR_U8 RGBA_U8"},

    {"RGB_U8 BGR_U8 BGR_U16 BGR_F32 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1", "ConvertToPackedFrame",
     "RGB_DPX_FILLED BGR_DPX_FILLED RGB_SMPTE_2110 BGR_SMPTE_2110"},
    {"RGB_U10", "ConvertToPackedFrame", "RGB_DPX_FILLED"},
    {"RGB_U12", "ConvertToPackedFrame", "RGB_SMPTE_2110"},

    {"RGB_DPX_FILLED BGR_DPX_FILLED", "ConvertToFullFrame",
     "BGR_U8 RGB_U16 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1"},
    {"RGB_SMPTE_2110 BGR_SMPTE_2110", "ConvertToFullFrame",
     "RGB_U16 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1"},
    {"RGB_SMPTE_2110 RGB_DPX_PACKED", "ConvertToFullFrame", "RGB_U12 BGR_U12"},
    {"RGB_DPX_PACKED BGR_DPX_PACKED", "ConvertToFullFrame", "BGRA_U8 RGBA_U8"},
    {"RGB_SMPTE_2110", "ConvertToFullFrame RGB_U12, ConvertBitDepth", "RGB_U8"},
    {"RGB_SMPTE_2110", "ConvertToFullFrame RGB_U12, ConvertBitDepth RGB_U8, ConvertColourspace", "BGR_U8"},
    {"BGR_SMPTE_2110", "ConvertToFullFrame BGR_U12, ConvertBitDepth", "BGR_U8"},
    {"RGB_DPX_PACKED", "ConvertToFullFrame RGBA_U8, ConvertColourspace", "RGB_U8 BGR_U8"},
    {"BGR_DPX_PACKED", "ConvertToFullFrame RGBA_U8, ConvertColourspace", "RGB_U8"},
    {"BGR_DPX_PACKED", "ConvertToFullFrame BGRA_U8, ConvertColourspace", "BGR_U8"},

    {"RGB_DPX_PACKED", "ConvertToFullFrame RGB_U12, ConvertToPackedFrame", "RGB_SMPTE_2110"},
    {"BGR_DPX_PACKED", "ConvertToFullFrame BGR_U12, ConvertToPackedFrame", "BGR_SMPTE_2110"},
    {"BGR_SMPTE_2110", "ConvertToFullFrame BGR_U12, ConvertToPackedFrame", "RGB_SMPTE_2110"},
    {"RGB_SMPTE_2110", "ConvertToFullFrame RGB_U12, ConvertToPackedFrame BGR_SMPTE_2110", "RGB_SMPTE_2110"},
    {"RGB_SMPTE_2110", "ConvertToFullFrame RGB_U12, ConvertBitDepth RGB_U15plus1, ConvertRGBtoYCbCr42x",
     "9ZT_422"},

    {"RGB_U8 BGR_U8 BGR_U16 BGR_F32 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1", "ConvertRGBtoYCbCr42x",
     "YUYV_422"},
    {"RGB_U15plus1 BGR_U16 BGR_F32 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1", "ConvertRGBtoYCbCr42x",
     "9ZT_422"},
    {"RGB_U8 BGR_U8 BGR_U16 BGR_F32 BGRA_U8 BGRA_U16 BGRA_F32", "ConvertRGBtoYCbCr42x", "9ZT_420"},
    {"BGRA_F32", "ConvertRGBtoYCbCr42x", "9ZT_4224"},

    {"YUYV_422 9ZT_422", "ConvertYCbCr42xToRGB",
     "RGB_U8 BGR_U8 RGBA_U8 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1"},
    {"9ZT_422", "ConvertYCbCr42xToRGB", "RGB_U16"},
    {"9ZT_420", "ConvertYCbCr42xToRGB", "RGB_U8 BGR_U8 BGRA_U8 BGRA_U16 BGRA_F32"},
    {"9ZT_4224", "ConvertYCbCr42xToRGB", "BGRA_F32"},

    {"RGB_U8 BGR_U8 RGBA_U8 BGRA_U8", "ConvertRGBtoYCoCgDXT5", "YCOCG_DXT5"},
    {"BGR_U16 BGR_F32", "ConvertBitDepth BGR_U8, ConvertRGBtoYCoCgDXT5", "YCOCG_DXT5"},
    {"BGRA_U16 BGRA_F32", "ConvertBitDepth BGRA_U8, ConvertRGBtoYCoCgDXT5", "YCOCG_DXT5"},
    {"RGB_U8 BGR_U8", "ConvertColourspace RGBA_U8, ConvertRGBtoYCoCgDXT5", "RGB_DXT1"},

    {"YCOCG_DXT5", "ConvertYCoCgDXT5toRGB", "RGB_U8 BGR_U8 BGRA_U8"},
    {"YCOCG_DXT5", "ConvertYCoCgDXT5toRGB BGRA_U8, ConvertBitDepth", "BGRA_F32"},
};

inline std::vector<std::string> wordsOf(std::string const& text, char separator = ' ') {
    std::vector<std::string> words;
    std::istringstream stream(text);
    for (std::string word; std::getline(stream >> std::ws, word, separator);)
        words.push_back(word);
    return words;
}

/// A chain of the listing as the Encoder shows it.
inline std::string chainText(std::string const& chain, std::string const& destination) {
    std::string text;
    for (std::string const& step : wordsOf(chain, ',')) {
        auto const words = wordsOf(step);
        std::string const& produced = words.size() > 1 ? words[1] : destination;
        text +=
            (text.empty() ? "" : ", ") + words[0] + " to " + FrameFormat::toString(catalogue().at(produced));
    }
    return text;
}

/// The chains of the listing by the catalogue names of source and destination.
inline std::map<std::pair<std::string, std::string>, std::string> const& directChains() {
    static auto const chains = [] {
        std::map<std::pair<std::string, std::string>, std::string> result;
        for (Routes const& row : routes)
            for (auto const& source : wordsOf(row.sources))
                for (auto const& destination : wordsOf(row.destinations))
                    EXPECT_TRUE(
                        result.emplace(std::pair(source, destination), chainText(row.chain, destination))
                            .second)
                        << source << " to " << destination << " is listed twice";
        return result;
    }();
    return chains;
}

/// What an Encoder must do for the pair; nothing when it must refuse.
inline std::optional<std::string> expectedChain(std::string const& source, std::string const& destination) {
    auto const& direct = directChains();
    if (source == destination)
        return chainText("ConvertNoOperation", destination);
    if (auto const found = direct.find({source, destination}); found != direct.end())
        return found->second;
    auto const there = direct.find({source, "BGRA_F32"}), onwards = direct.find({"BGRA_F32", destination});
    if (there == direct.end() || onwards == direct.end())
        return {};
    return there->second + ", " + onwards->second;
}

} // namespace TestSupport
