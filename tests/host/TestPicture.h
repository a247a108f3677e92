// A picture whose samples are computed, for tests of the host and of plug-ins.
#pragma once

#include <host/EmbeddedHost.h>

#include <functional>
#include <stdexcept>
#include <utility>

class TestPicture : public EmbeddedHost::PictureSource {
public:
    using Samples = std::function<float(EmbeddedHost::PictureChannel channel, int x, int y)>;

    TestPicture(int width, int height, bool withAlpha, Samples samples)
        : pictureWidth(width), pictureHeight(height), alpha(withAlpha), sample(std::move(samples)) {}

    int width() const override { return pictureWidth; }
    int height() const override { return pictureHeight; }
    bool hasAlpha() const override { return alpha; }

    void readRow(int y, int x, int r, EmbeddedHost::PictureChannel channel, float* to) override {
        if (channel == EmbeddedHost::PictureChannel::Alpha && !alpha)
            throw std::logic_error("The alpha of a picture without alpha was read");
        for (; x < r; ++x)
            *to++ = sample(channel, x, y);
    }

private:
    int pictureWidth;
    int pictureHeight;
    bool alpha;
    Samples sample;
};
