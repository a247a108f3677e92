// Where the pictures of a run come from, by frame number.
#pragma once

#include "Chart.h"
#include "PictureFile.h"
#include "SequencePattern.h"

#include <pictures/Picture.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZetTool {

/// Pictures numbered by frame. May be used from several threads at once.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    /// The frames that are there, ascending.
    virtual std::vector<int> frames() const = 0;
    /// What to call a frame's picture in messages.
    virtual std::string name(int frame) const = 0;
    /// The frame's file; empty for a picture that no file holds. Throws std::runtime_error like the others.
    virtual std::filesystem::path file(int frame) const = 0;
    /// Both throw std::runtime_error that names the picture when it is missing or cannot be read.
    virtual PictureHeader header(int frame) const = 0;
    virtual Picture read(int frame, const HeaderCheck& check = {}) const = 0;
};

/// Either one sequence or a list of files. In a list, the frames have the numbers at the end of the files'
/// names ("shot.1001.exr") when all names have one and no two the same; else they are numbered from 1 as
/// listed. Throws std::runtime_error when a sequence stands among several names; that there is no picture is
/// for the caller to find.
std::unique_ptr<FrameSource> openPictureFiles(const std::vector<std::string>& arguments);

/// The line-up chart, with frames 1 to 24 unless others are asked for.
std::unique_ptr<FrameSource> openChart(const PictureSize& size);

/// The frame numbers that a list of files has.
std::map<int, std::filesystem::path> numberFiles(const std::vector<std::filesystem::path>& files);

} // namespace ZetTool
