// The writer that the host application uses for "zet" and "z9zt" files.
#pragma once

#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/Frame.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>

#include <DDImage/Knobs.h>
#include <DDImage/Writer.h>

#include <memory>

/// Writes each frame of its node as a media file in the pixel format that the user chose in the menu.
class zetWriterMCL : public DD::Image::Writer {
public:
    explicit zetWriterMCL(DD::Image::Write* write);

    void knobs(DD::Image::Knob_Callback f) override;
    const char* help() override;
    ~zetWriterMCL() override;
    /// Writes the current frame; a failure becomes a critical error of the node.
    void execute() override;

    static const DD::Image::Writer::Description description;

private:
    void setupConversionPipeline();
    std::unique_ptr<Zentrel::IFrame> readFrame();
    void convertAndWriteFrame(std::unique_ptr<Zentrel::IFrame> frame);

    int outputFormatIndex;
    MediaConversion::Encoder encoder;
    FrameSinkDestination destination;
    DD::Image::Knob* outputFormatKnob;
};
