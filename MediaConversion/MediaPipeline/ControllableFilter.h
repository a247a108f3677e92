// The state machine that every filter shares.
#pragma once

#include <MediaConversion/MediaPipeline/FrameInterfaces.h>

#include <cstdint>
#include <stdexcept>
#include <string>

/// Base of the concrete filter `T`, which supplies `doOnNewFrame`: a frame in, the converted frame out. A
/// filter takes frames while it is Active and can be connected while it is Idle; in the wrong state every
/// operation throws std::runtime_error and changes nothing.
template <class T>
class ControllableFilter : public IFrameFilter, public IFrameControl {
public:
    enum class State : std::uint32_t { Idle, Active };

    static std::string toString(State state) {
        switch (state) {
        case State::Idle:
            return "Idle";
        case State::Active:
            return "Active";
        }
        return "Unknown State " + std::to_string(static_cast<std::uint32_t>(state));
    }

    State state() const { return currentState; }

    void connect(IFrameSink* sink) override {
        requireState(State::Idle);
        frameSink = sink;
    }

    void disconnect(IFrameSink* sink) override {
        requireState(State::Idle);
        if (sink != frameSink)
            throw std::runtime_error("frameSink was not connected");
        frameSink = nullptr;
    }

    void onNewFrame(std::unique_ptr<Zentrel::IFrame> frame) override {
        requireState(State::Active);
        if (!frame)
            throw std::runtime_error("no frame data");
        if (!frameSink)
            throw std::runtime_error("no frame sink connected");
        // In two statements, so that the source frame's memory is free again before the next filter asks for
        // some.
        auto converted = static_cast<T&>(*this).doOnNewFrame(std::move(frame));
        frameSink->onNewFrame(std::move(converted));
    }

    /// Becomes Active, then starts the sink behind it; Idle again when the sink cannot start.
    void start() override {
        requireState(State::Idle);
        currentState = State::Active;
        try {
            if (auto* const control = dynamic_cast<IFrameControl*>(frameSink))
                control->start();
        } catch (...) {
            currentState = State::Idle;
            throw;
        }
    }

    /// Stops the sink behind it, then becomes Idle.
    void stop() override {
        requireState(State::Active);
        if (auto* const control = dynamic_cast<IFrameControl*>(frameSink))
            control->stop();
        currentState = State::Idle;
    }

private:
    void requireState(State required) const {
        if (currentState != required)
            throw std::runtime_error("State must be " + toString(required) + " for this operation");
    }

    IFrameSink* frameSink = nullptr;
    State currentState = State::Idle;
};
