// The image processor that looks its work up in a table of conversions.
#pragma once

#include <MediaConversion/MediaPipeline/FrameInterfaces.h>

#include <functional>
#include <map>
#include <stdexcept>
#include <tuple>

namespace MediaConversion {

/// Base of the processors that turn `Source` frames into `Destination` frames. The concrete `Processor`
/// supplies
/// - `conversions()`, its table,
/// - `wrongFrameKind`, the text for frames that are no `Source`,
/// - `unsupported`, what stands before the formats' names when the table lacks a pair.
template <class Processor, class Source, class Destination>
class TableProcessor : public IImageProcessor {
public:
    using Conversion = std::function<Destination(Source const&, Zentrel::FrameFormat const&)>;
    /// By source format and destination format.
    using ConversionTable = std::map<std::tuple<Zentrel::FrameFormat, Zentrel::FrameFormat>, Conversion>;

    explicit TableProcessor(Zentrel::FrameFormat const& destination) : destination(destination) {}

    /// Throws std::runtime_error for a pair of formats that is not in the table.
    static Conversion selectConversion(Zentrel::FrameFormat const& source,
                                       Zentrel::FrameFormat const& destination) {
        auto const found = Processor::conversions().find({source, destination});
        if (found == Processor::conversions().end())
            throw std::runtime_error(Processor::unsupported + Zentrel::FrameFormat::toString(source) +
                                     " to " + Zentrel::FrameFormat::toString(destination));
        return found->second;
    }

    /// Throws std::runtime_error for a format that cannot be converted and for a frame without pixels.
    Destination convert(Source const& frame) const {
        auto const conversion = selectConversion(frame.format(), destination);
        if (!frame.image().data)
            throw std::runtime_error("no image data in frame");
        return conversion(frame, destination);
    }

    /// Throws std::runtime_error for no frame or one of the wrong kind.
    std::unique_ptr<Zentrel::IFrame> onNewImage(std::unique_ptr<Zentrel::IImageFrame> frame) override {
        auto const* const source = dynamic_cast<Source const*>(frame.get());
        if (!source)
            throw std::runtime_error(Processor::wrongFrameKind);
        return std::make_unique<Destination>(convert(*source));
    }

private:
    Zentrel::FrameFormat destination;
};

} // namespace MediaConversion
