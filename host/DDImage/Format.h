// The size of a picture.
#pragma once

namespace DD::Image {

class Format {
public:
    Format(int width, int height) : pixelWidth(width), pixelHeight(height) {}

    int width() const { return pixelWidth; }
    int height() const { return pixelHeight; }

private:
    int pixelWidth;
    int pixelHeight;
};

} // namespace DD::Image
