// The node that a writer works for.
#pragma once

#include <DDImage/ChannelSet.h>
#include <DDImage/Iop.h>
#include <DDImage/Row.h>

namespace DD::Image {

class Write : public Iop {
public:
    ~Write() override;

    /// The file to write for this frame; null when there is no name.
    virtual const char* filename() const = 0;

    /// Reads columns `x` to `r` (exclusive) of row `y` of the input, counted from the bottom, into `row`.
    virtual void inputnget(int y, int x, int r, const ChannelSet& channels, Row& row) = 0;

    /// What `Writer` offers to its subclasses under the same names.
    virtual int depth() const = 0;
    virtual bool premult() const = 0;
    virtual void to_float(int z, float* to, const float* from, const float* alpha, int W,
                          int delta) const = 0;
};

} // namespace DD::Image
