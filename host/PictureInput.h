// A picture in memory as the operation at the input of a Write node.
#pragma once

#include <host/EmbeddedHost.h>

#include <DDImage/Iop.h>
#include <DDImage/Row.h>

#include <string>

namespace EmbeddedHost {

/// Thrown when the picture could not be read. It is not a std::exception, so that no writer takes it for a
/// failure of its own and reports the text, in which a "%" of a file name would be read as a format
/// directive.
struct PictureFailure {
    std::string message;
};

/// Hands out rows of a picture, within what has been requested.
class PictureInput final : public DD::Image::Iop {
public:
    explicit PictureInput(PictureSource& picture);

    bool hasAlpha() const { return picture.hasAlpha(); }

    DD::Image::Op* input(int) const override { return nullptr; }
    const Info& info() const override { return pictureInfo; }
    void request(int x, int y, int r, int t, const DD::Image::ChannelSet& channels, int count) override;

    /// Reads one row; a channel that the picture lacks reads as zeros. Throws PictureFailure for what the
    /// picture throws and std::logic_error for a row, columns or channels that were not requested.
    void read(int y, int x, int r, const DD::Image::ChannelSet& channels, DD::Image::Row& row);

private:
    struct Region {
        int x, y, r, t;
        DD::Image::ChannelSet channels;
    };

    PictureSource& picture;
    Info pictureInfo;
    Region requested{};
};

} // namespace EmbeddedHost
