// What the frames of a contact sheet are compared with.
#pragma once

#include "FrameSource.h"

#include <opencv2/core/mat.hpp>
#include <pictures/Transfer.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace ZetTool {

/// The pictures of a source as the writer gets them. A single picture stands for all frames.
class SheetSource {
public:
    struct Frame {
        int number;
        std::string name;
        bool hasAlpha;
        EmbeddedHost::Transfer transfer; ///< that it was taken through
        cv::Mat pixels;                  ///< CV_32FC4: blue, green, red, alpha

        PictureSize size() const { return {pixels.cols, pixels.rows}; }
    };

    SheetSource(std::unique_ptr<FrameSource> source, TransferChoice transfer);

    /// The frame, which is kept for the next call. May be called from several threads. Throws
    /// std::runtime_error that names a picture that cannot be read.
    std::shared_ptr<const Frame> frame(int number);

private:
    std::shared_ptr<const Frame> load(int number) const;

    std::unique_ptr<FrameSource> pictures;
    TransferChoice choice;
    std::optional<int> onlyFrame;
    std::mutex mutex;
    std::shared_ptr<const Frame> last;
};

} // namespace ZetTool
