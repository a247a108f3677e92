// Looks through a whole sequence of media files for whatever a player would stumble over.
#pragma once

#include "Manifest.h"
#include "MediaFiles.h"
#include "Progress.h"
#include "SequencePattern.h"

#include <plugin/OutputFormats.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ZetTool {

/// What the sequence is to be. Where nothing is asked for, most of the files decide.
struct CheckRequest {
    std::string pattern;
    std::optional<std::string> frames;  ///< ranges; without them, all from the first to the last
    std::vector<std::string> manifests; ///< with them, the content is checked as well
    const OutputFormat* format = nullptr;
    std::optional<PictureSize> size;
    unsigned jobs = 1;
};

struct Fault {
    int frame;
    std::filesystem::path file;
    std::string text; ///< without the file's name
};

struct CheckResult {
    std::vector<int> frames;           ///< those that ought to be there, ascending
    std::size_t files = 0;             ///< of them, those that are
    std::uint64_t bytes = 0;           ///< of files whose headers and length are right
    std::optional<MediaFileInfo> look; ///< what most files say of themselves
    std::vector<Fault> faults;         ///< by frame
};

/// One check; it refers to the request, which must live as long.
class SequenceCheck {
public:
    /// Settles which frames there should be and finds those that are there. Throws std::runtime_error when
    /// there is nothing to check, or a manifest cannot be used.
    explicit SequenceCheck(const CheckRequest& request);

    /// The files to look at.
    std::size_t fileCount() const { return seen.size(); }
    /// Looks at them, and tells `progress` of each. To be called once.
    CheckResult run(Progress& progress);

private:
    struct Seen {
        int frame;
        FoundFile file;
        std::string contentFault;
    };

    void fault(int frame, std::string text);
    void sortOut(const std::vector<int>& onDisk);
    std::optional<MediaFileInfo> commonLook() const;
    void judge(const Seen& one);

    const CheckRequest& request;
    const SequencePattern pattern;
    const Manifest manifest;
    std::vector<Seen> seen;
    CheckResult result;
};

} // namespace ZetTool
