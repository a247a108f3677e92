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

/// A type of picture files. Files of up to 8 bits get 8-bit samples and others 16-bit ones, in EXR half and,
/// above 10 bits, float.
class PictureFileType {
public:
    virtual ~PictureFileType() = default;

    virtual bool holdsAlpha() const = 0;
    /// Samples of EXR and HDR are linear light, whatever a tag says.
    virtual bool isLinear() const = 0;

    /// Throws std::runtime_error when the type is linear and the way to there from this colour space is
    /// unknown.
    virtual void checkColourSpace(const std::string& colourSpace) const = 0;

    /// Writes the file under a temporary name and renames that; returns its length. Samples are written as
    /// they are, but linear types get linear ones with their colour multiplied by alpha. Throws
    /// std::runtime_error that names the file, EndOfRun when the disk is full.
    virtual std::uint64_t write(const OutputPicture& picture, const std::filesystem::path& file) const = 0;
};

} // namespace ZetTool
