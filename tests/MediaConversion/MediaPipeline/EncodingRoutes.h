// What leads from each format to each other, listed by filter.
#pragma once

#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>

#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

using Zentrel::FrameFormat;

/// All formats by their names in the listing: "BGRA_F32", or the layout alone where it is a packed one.
inline std::map<std::string, FrameFormat> const& catalogue() {
    static auto const formats = [] {
        std::map<std::string, FrameFormat> result;
        auto const add = [&result](FrameFormat const& format) {
            auto const depth = "_" + FrameFormat::toString(format.channelType);
            result.emplace(format.layoutName + (Zentrel::PackedFrame::is(format) ? "" : depth), format);
        };
        for (auto const& [format, type] : Zentrel::FullFrame::openCvTypes)
            add(format);
        for (auto const& [format, type] : Zentrel::PackedFrame::openCvTypes)
            add(format);
        add(Zentrel::FullFrameFormat::YCBCR_ITU_T871_YCBCR_U10()); // no frame can have it
        return result;
    }();
    return formats;
}

/// The same chain from each of the sources to each of the destinations. Its filters are without their
/// "Convert"; one with no format behind it produces the destination.
struct Routes {
    const char* sources;
    const char* chain;
    const char* destinations;
};

inline constexpr Routes routes[] = {
    {"RGB_U8", "Colourspace", "BGR_U8 RGBA_U8 BGRA_U8"},
    {"BGR_U8", "Colourspace", "RGB_U8 RGBA_U8 BGRA_U8"},
    {"RGBA_U8", "Colourspace", "RGB_U8 BGR_U8 BGRA_U8"},
    {"BGRA_U8", "Colourspace", "RGB_U8 BGR_U8 RGBA_U8"},
    {"BGR_F32", "Colourspace", "BGRA_F32"},
    {"BGRA_U8", "BitDepth", "BGRA_F32"},
    {"BGRA_F32", "BitDepth", "BGRA_U8"},
    {"RGB_U8 BGR_U8 RGBA_U8", "Colourspace BGRA_U8, BitDepth", "BGRA_F32"},
    {"BGRA_F32", "BitDepth BGRA_U8, Colourspace", "RGB_U8 BGR_U8 RGBA_U8"},

    {"RGB_U8 BGR_U8 BGR_U16 BGR_F32 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1", "ToPackedFrame",
     "RGB-DPX-FILLED BGR-DPX-FILLED RGB-SMPTE-2110 BGR-SMPTE-2110"},
    {"RGB_U10", "ToPackedFrame", "RGB-DPX-FILLED"},
    {"RGB_U12", "ToPackedFrame", "RGB-SMPTE-2110"},

    {"RGB-DPX-FILLED BGR-DPX-FILLED", "ToFullFrame",
     "BGR_U8 RGB_U16 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1"},
    {"RGB-SMPTE-2110 BGR-SMPTE-2110", "ToFullFrame",
     "RGB_U16 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1"},
    {"RGB-SMPTE-2110 RGB-DPX-PACKED", "ToFullFrame", "RGB_U12 BGR_U12"},
    {"RGB-DPX-PACKED BGR-DPX-PACKED", "ToFullFrame", "BGRA_U8 RGBA_U8"},
    {"RGB-SMPTE-2110", "ToFullFrame RGB_U12, BitDepth", "RGB_U8"},
    {"RGB-SMPTE-2110", "ToFullFrame RGB_U12, BitDepth RGB_U8, Colourspace", "BGR_U8"},
    {"BGR-SMPTE-2110", "ToFullFrame BGR_U12, BitDepth", "BGR_U8"},
    {"RGB-DPX-PACKED", "ToFullFrame RGBA_U8, Colourspace", "RGB_U8 BGR_U8"},
    {"BGR-DPX-PACKED", "ToFullFrame RGBA_U8, Colourspace", "RGB_U8"},
    {"BGR-DPX-PACKED", "ToFullFrame BGRA_U8, Colourspace", "BGR_U8"},

    {"RGB-DPX-PACKED", "ToFullFrame RGB_U12, ToPackedFrame", "RGB-SMPTE-2110"},
    {"BGR-DPX-PACKED", "ToFullFrame BGR_U12, ToPackedFrame", "BGR-SMPTE-2110"},
    {"BGR-SMPTE-2110", "ToFullFrame BGR_U12, ToPackedFrame", "RGB-SMPTE-2110"},
    {"RGB-SMPTE-2110", "ToFullFrame RGB_U12, ToPackedFrame BGR-SMPTE-2110", "RGB-SMPTE-2110"},
    {"RGB-SMPTE-2110", "ToFullFrame RGB_U12, BitDepth RGB_U15plus1, RGBtoYCbCr42x", "9ZT-422"},

    {"RGB_U8 BGR_U8 BGR_U16 BGR_F32 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1", "RGBtoYCbCr42x",
     "YUYV-422"},
    {"RGB_U15plus1 BGR_U16 BGR_F32 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1", "RGBtoYCbCr42x",
     "9ZT-422"},
    {"RGB_U8 BGR_U8 BGR_U16 BGR_F32 BGRA_U8 BGRA_U16 BGRA_F32", "RGBtoYCbCr42x", "9ZT-420"},
    {"BGRA_F32", "RGBtoYCbCr42x", "9ZT-4224-HYBRID"},

    {"YUYV-422 9ZT-422", "YCbCr42xToRGB",
     "RGB_U8 BGR_U8 RGBA_U8 BGRA_U8 BGRA_U16 BGRA_F32 ARGB_U8 ARGB_U15plus1"},
    {"9ZT-422", "YCbCr42xToRGB", "RGB_U16"},
    {"9ZT-420", "YCbCr42xToRGB", "RGB_U8 BGR_U8 BGRA_U8 BGRA_U16 BGRA_F32"},
    {"9ZT-4224-HYBRID", "YCbCr42xToRGB", "BGRA_F32"},

    {"RGB_U8 BGR_U8 RGBA_U8 BGRA_U8", "RGBtoYCoCgDXT5", "YCoCg-DXT5"},
    {"BGR_U16 BGR_F32", "BitDepth BGR_U8, RGBtoYCoCgDXT5", "YCoCg-DXT5"},
    {"BGRA_U16 BGRA_F32", "BitDepth BGRA_U8, RGBtoYCoCgDXT5", "YCoCg-DXT5"},
    {"RGB_U8 BGR_U8", "Colourspace RGBA_U8, RGBtoYCoCgDXT5", "RGB-DXT1"},

    {"YCoCg-DXT5", "YCoCgDXT5toRGB", "RGB_U8 BGR_U8 BGRA_U8"},
    {"YCoCg-DXT5", "YCoCgDXT5toRGB BGRA_U8, BitDepth", "BGRA_F32"},
};

inline std::vector<std::string> wordsOf(std::string const& text, char separator = ' ') {
    std::vector<std::string> words;
    std::istringstream stream(text);
    for (std::string word; std::getline(stream >> std::ws, word, separator);)
        words.push_back(word);
    return words;
}

/// Chains as an Encoder prints them, by source and destination.
using Chains = std::map<std::pair<FrameFormat, FrameFormat>, std::string>;

inline std::string printed(std::string const& steps, std::string const& destination) {
    std::string chain;
    for (std::string const& step : wordsOf(steps, ',')) {
        auto const words = wordsOf(step);
        chain += (chain.empty() ? "Convert" : ", Convert") + words[0] + " to " +
                 FrameFormat::toString(catalogue().at(words.size() > 1 ? words[1] : destination));
    }
    return chain;
}

inline Chains const& listedChains() {
    static auto const chains = [] {
        Chains result;
        for (Routes const& row : routes)
            for (auto const& source : wordsOf(row.sources))
                for (auto const& destination : wordsOf(row.destinations))
                    result[{catalogue().at(source), catalogue().at(destination)}] =
                        printed(row.chain, destination);
        return result;
    }();
    return chains;
}

/// What an Encoder must do for the pair; empty when it must refuse.
inline std::string expectedChain(FrameFormat const& source, FrameFormat const& destination) {
    if (source == destination)
        return "ConvertNoOperation to " + FrameFormat::toString(destination);
    auto const& listed = listedChains();
    if (auto const found = listed.find({source, destination}); found != listed.end())
        return found->second;
    FrameFormat const middle = catalogue().at("BGRA_F32");
    auto const there = listed.find({source, middle}), onwards = listed.find({middle, destination});
    bool const refused = there == listed.end() || onwards == listed.end();
    return refused ? "" : there->second + ", " + onwards->second;
}

} // namespace TestSupport
