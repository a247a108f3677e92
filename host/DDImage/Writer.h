// The base of file writers, and how they register themselves.
#pragma once

#include <DDImage/ChannelSet.h>
#include <DDImage/Iop.h>
#include <DDImage/Knobs.h>
#include <DDImage/Write.h>

#include <string>
#include <vector>

/// Says when and for which host version a plug-in was built. It is a macro because each plug-in is stamped
/// while it is compiled, and fixed because the same source shall give the same file.
#ifndef DDIMAGE_BUILD_STAMP
#define DDIMAGE_BUILD_STAMP "Oct  9 2024 for 14.1"
#endif

namespace DD::Image {

/// Writes the frames of one Write node, one `execute` per frame.
class Writer {
public:
    class Description;

    explicit Writer(Write* node);
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// Describes the controls that appear on the node's panel.
    virtual void knobs(Knob_Callback f);
    virtual const char* help();
    virtual ~Writer();
    /// One file holds all the frames.
    virtual bool movie() const;
    /// Writes the current frame.
    virtual void execute() = 0;
    /// Comes once, after the last frame.
    virtual void finish();

protected:
    /// The number of channels to write: 3 without alpha, 4 with.
    int depth() const { return iop->depth(); }
    /// The first `n` channels to write.
    ChannelSet channel_mask(int n) const;
    /// The channel that output channel `n` takes its values from.
    Channel channel(int n) const { return static_cast<Channel>(n); }

    /// The size of the input.
    const Iop::Info& info() const { return input0().info(); }
    int width() const { return info().format().width(); }
    int height() const { return info().format().height(); }
    Iop& input0() const { return *static_cast<Iop*>(iop->input(0)); }

    const char* filename() const { return iop->filename(); }

    /// Colour is to be written multiplied by alpha.
    bool premult() const { return iop->premult(); }
    /// Converts `W` samples of output channel `z` into the output colour space and writes every `delta`-th
    /// float. With an alpha buffer, premultiplied colour is divided by alpha before and multiplied after.
    void to_float(int z, float* to, const float* from, const float* alpha, int W, int delta) const {
        iop->to_float(z, to, from, alpha, W, delta);
    }

    Write* iop;
};

/// Registers a writer for some file types as long as it lives; made as a static object of the plug-in.
class Writer::Description {
public:
    using Constructor = Writer* (*)(Write*);

    /// `typeNames` are the file types, each ended by a zero and the list by a second one ("zet\0z9zt\0" as a
    /// literal).
    Description(const char* typeNames, const char* shownLabel, Constructor make)
        : Description(typeNames, shownLabel, make, DDIMAGE_BUILD_STAMP) {}
    Description(const char* typeNames, Constructor make) : Description(typeNames, typeNames, make) {}
    ~Description();
    Description(const Description&) = delete;
    Description& operator=(const Description&) = delete;

    /// The writer of a file type; null when there is none.
    static const Description* find(const char* fileType);
    /// All registered writers, in the order of registration.
    static const std::vector<const Description*>& all();

    std::vector<std::string> fileTypes() const;

    const char* const names;
    const char* const label; ///< without one of its own, the first file type shows
    const Constructor constructor;
    const char* const buildStamp;

private:
    Description(const char* typeNames, const char* shownLabel, Constructor make, const char* stamp);
    void add();
};

} // namespace DD::Image
