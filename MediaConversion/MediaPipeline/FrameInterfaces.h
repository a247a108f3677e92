// The interfaces that a chain of filters is made of. Frames move along the chain, each hop handing over
// ownership.
#pragma once

#include <MediaConversion/MediaPipeline/Frame.h>

#include <memory>

class IFrameSink {
public:
    virtual ~IFrameSink() = default;
    virtual void onNewFrame(std::unique_ptr<Zentrel::IFrame> frame) = 0;
};

/// Hands its frames to one sink, which it does not own.
class IFrameSource {
public:
    virtual ~IFrameSource() = default;
    virtual void connect(IFrameSink* frameSink) = 0;
    virtual void disconnect(IFrameSink* frameSink) = 0;
};

class IFrameFilter : public IFrameSource, public IFrameSink {};

class IFrameControl {
public:
    virtual ~IFrameControl() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
};

/// A sink from which the last frame can be taken.
class IFrameSinkDestination : public IFrameSink {
public:
    virtual std::unique_ptr<Zentrel::IFrame> frame() = 0;
};

/// Makes a frame from one in host memory.
class IImageProcessor {
public:
    virtual ~IImageProcessor() = default;
    virtual std::unique_ptr<Zentrel::IFrame> onNewImage(std::unique_ptr<Zentrel::IImageFrame> frame) = 0;
};

/// Makes a frame from one on a graphics card.
class ITextureProcessor {
public:
    virtual ~ITextureProcessor() = default;
    virtual std::unique_ptr<Zentrel::IFrame> onNewTexture(std::unique_ptr<Zentrel::ITextureFrame> frame) = 0;
};
