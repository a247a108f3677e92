// Turns frames of one format into frames of another.
#pragma once

#include <MediaConversion/MediaPipeline/FramePipeline.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace MediaConversion {

/// Chains the filters that lead from one format to another. Connect a sink, start, push frames, stop. One
/// thread at a time; in the wrong state every operation throws std::runtime_error and changes nothing.
class Encoder final : public IFrameControl, public IFrameFilter {
public:
    enum class EncoderState : std::uint32_t { Idle, Encoding };

    using FilterFactory = std::function<std::unique_ptr<IFrameFilter>(Zentrel::FrameFormat const&)>;
    /// A filter and the format that it produces.
    using EncodingStep = std::tuple<FilterFactory, Zentrel::FrameFormat>;
    /// The steps from one format (first of the key) to another (second).
    using EncodingStepTable =
        std::map<std::tuple<Zentrel::FrameFormat, Zentrel::FrameFormat>, std::vector<EncodingStep>>;

    /// A step as it can be shown.
    struct ChainLink {
        std::string filter; ///< the name of the filter's class
        Zentrel::FrameFormat produced;
    };
    using Chain = std::vector<ChainLink>;

    /// Every pair of formats that is served without a detour; all others that are go by way of BGRA_F32. From
    /// BGRA_F32 and BGR_F32 all formats are reached that media files hold, but for DXT1; from others fewer
    /// are. The table is filled before main begins: no Encoder can be made sooner.
    static const EncodingStepTable encodingSteps;

    /// Throws std::runtime_error for a pair of formats that is not supported.
    Encoder(Zentrel::FrameFormat in, Zentrel::FrameFormat out);

    /// What is left behind can only be destroyed or assigned to.
    Encoder(Encoder&&) = default;
    /// Destroys the filters that it had and takes over those of the other, with their sink and state.
    Encoder& operator=(Encoder&&) = default;

    void start() override;
    void stop() override;
    void onNewFrame(std::unique_ptr<Zentrel::IFrame> frame) override { encodeFrame(std::move(frame)); }
    void connect(IFrameSink* sink) override;
    void disconnect(IFrameSink* sink) override;

    /// Converts a frame and hands the result to the sink before it returns. Throws std::runtime_error for an
    /// empty frame, for one that is not of the input format and for whatever a filter refuses; the next frame
    /// can follow.
    void encodeFrame(std::unique_ptr<Zentrel::IFrame> frame);

    /// What frames pass through, in this order.
    Chain chain() const { return describe(stepsBetween(inputFormat, outputFormat)); }
    static Chain describe(std::vector<EncodingStep> const& steps);
    /// As in "ConvertBitDepth to RGBA_U8_BGRA, ConvertColourspace to RGB_U8_RGB".
    static std::string toString(Chain const& chain);

    EncoderState state() const { return currentState; }
    /// Throws std::runtime_error when the state is not the required one.
    void checkState(EncoderState required) const;
    static std::string toString(EncoderState state);

    /// The steps from the table, else those of the detour. Throws std::runtime_error when there are none.
    static std::vector<EncodingStep> selectEncodingSteps(Zentrel::FrameFormat const& in,
                                                         Zentrel::FrameFormat const& out);
    /// The table's steps to float BGRA followed by those from there.
    static std::vector<EncodingStep> selectIndirectEncodingStepsViaBgra32f(Zentrel::FrameFormat const& in,
                                                                           Zentrel::FrameFormat const& out);

private:
    /// Those of `selectEncodingSteps`, and for equal formats the one that passes frames through.
    static std::vector<EncodingStep> stepsBetween(Zentrel::FrameFormat const& in,
                                                  Zentrel::FrameFormat const& out);
    void addFilter(std::unique_ptr<IFrameFilter> filter);

    Zentrel::FrameFormat inputFormat;
    Zentrel::FrameFormat outputFormat;
    FramePipeline pipeline;
    std::vector<std::unique_ptr<IFrameFilter>> filters;
    EncoderState currentState = EncoderState::Idle;
};

} // namespace MediaConversion
