// Pictures on their way into files.
#pragma once

#include <opencv2/core/mat.hpp>

#include <cstdint>
#include <filesystem>
#include <string>

namespace ZetTool {

/// A picture and what its file is to say of it.
struct OutputPicture {
    cv::Mat pixels; ///< blue, green, red and perhaps alpha, as bytes or as floats from 0 to 1
    int bits = 8;   ///< that the samples are good for
    std::string colourSpace = "sRGB";
    bool premultiplied = false; ///< colour is multiplied by alpha
};

/// What the extension of a picture's name stands for. Files of up to 8 bits get 8-bit samples and others
/// 16-bit ones, in EXR half and, above 10 bits, float.
class PictureFileType {
public:
    /// Throws std::runtime_error for an extension that stands for no type that can be written.
    explicit PictureFileType(const std::filesystem::path& file);

    bool holdsAlpha() const { return alpha; }
    /// Samples of EXR and HDR are linear light, whatever a tag says.
    bool isLinear() const;

    /// Throws std::runtime_error when the type is linear and the way to there from this colour space is
    /// unknown.
    void checkColourSpace(const std::string& colourSpace) const;

    /// Writes the file under a temporary name and renames that; returns its length. Samples are written as
    /// they are, but linear types get linear ones with their colour multiplied by alpha. Throws
    /// std::runtime_error that names the file, EndOfRun when the disk is full.
    std::uint64_t write(const OutputPicture& picture, const std::filesystem::path& file) const;

private:
    std::string name;
    bool alpha;
};

} // namespace ZetTool
