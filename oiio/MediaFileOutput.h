// Media files as OpenImageIO writes them.
#pragma once

#include <OpenImageIO/imageio.h>

#include <memory>
#include <string>

namespace ZetImageIo {

/// Makes the same bytes as "zet write" makes of the same samples. The picture's attributes choose how:
///   zet:format    label, short name or index of the output format, "0" without it
///   zet:transfer  auto, none, srgb or rec709, "auto" without it
/// The file is written when it is closed and all its rows have come, under a temporary name that is changed
/// when it is whole.
class MediaFileOutput final : public OIIO::ImageOutput {
public:
    MediaFileOutput();
    ~MediaFileOutput() override;

    const char* format_name() const override;
    int supports(OIIO::string_view feature) const override;

    /// Fails for sizes that the format cannot hold, with the nearest that it can, and for a missing folder.
    bool open(const std::string& name, const OIIO::ImageSpec& spec, OpenMode mode) override;
    bool close() override;
    /// Rows come from the top one down.
    bool write_scanline(int y, int z, OIIO::TypeDesc format, const void* data,
                        OIIO::stride_t xstride) override;

private:
    struct Job;

    std::unique_ptr<Job> job; ///< empty when nothing is open
};

} // namespace ZetImageIo
