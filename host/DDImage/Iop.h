// An operation that gives a picture.
#pragma once

#include <DDImage/ChannelSet.h>
#include <DDImage/Format.h>
#include <DDImage/Op.h>

namespace DD::Image {

class Iop : public Op {
public:
    /// What is known of a picture before it is made.
    class Info {
    public:
        explicit Info(const Format& format) : pictureFormat(format) {}
        const Format& format() const { return pictureFormat; }

    private:
        Format pictureFormat;
    };

    ~Iop() override;

    virtual const Info& info() const = 0;

    /// Announces that columns `x` to `r` (exclusive) of rows `y` to `t` (exclusive) will be read `count`
    /// times. Rows are numbered from the bottom.
    virtual void request(int x, int y, int r, int t, const ChannelSet& channels, int count) = 0;
};

} // namespace DD::Image
