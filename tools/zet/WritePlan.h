// What a run of "zet write" is going to do, settled before it starts.
#pragma once

#include "FrameSource.h"
#include "Manifest.h"
#include "SequencePattern.h"

#include <pictures/FormatChoice.h>
#include <pictures/MediaFileShape.h>
#include <pictures/Transfer.h>

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZetTool {

/// The part of the command line that says what is to be written.
struct WriteRequest {
    std::vector<std::string> pictures; ///< one sequence or a list of files; empty for the chart
    std::optional<PictureSize> chart;
    std::string output;
    std::string format = "0";          ///< label, short name or index
    std::optional<std::string> frames; ///< ranges; without them all that are there
};

struct WritePlan {
    std::unique_ptr<FrameSource> source;
    const OutputFormat* format;
    std::string fileType; ///< by which the writer is found
    SequencePattern target;
    std::vector<int> frames; ///< to be written, in this order
    std::vector<int> whole;  ///< left out because their files are whole

    /// The first picture that can be read settles the size for all; empty when none can.
    std::optional<PictureHeader> picture;
    std::optional<MediaFileShape> shape;

    /// What the frame's file is to look like. Throws std::runtime_error, with the picture's name and both
    /// sizes, when its picture does not have the size of the sequence.
    const MediaFileShape& shapeFor(int frame, const PictureHeader& header) const;
};

/// Throws std::runtime_error for everything that would spoil every frame: unknown format or file type, no
/// frames, a size that the format cannot hold, an output folder that is missing or closed, an output name
/// that is a folder or would take several frames.
WritePlan planWrite(const WriteRequest& request);

/// Moves to `whole` the frames whose files need not be written again: those that have the head and the length
/// of what would be written, that are newer than their pictures and, where there is a manifest, that are as
/// it lists them. Looks at up to `jobs` files at once.
void leaveOutWhole(WritePlan& plan, const Manifest* manifest, unsigned jobs);

/// Lists what would be written, with sizes, and what stands in the way of single frames. Returns the number
/// of frames that would fail.
std::size_t printPlan(const WritePlan& plan, TransferChoice transfer, std::ostream& output,
                      std::ostream& errors);

} // namespace ZetTool
