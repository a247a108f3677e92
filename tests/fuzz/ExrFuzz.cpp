// Any bytes at all as an EXR file: it is left to others, has no pixels that can be read, or gives every
// sample.
#include <tests/fuzz/Require.h>
#include <tools/zet/ExrFile.h>

#include <algorithm>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static int const file = ::memfd_create("exr", 0);
    require(::ftruncate(file, 0) == 0 && ::pwrite(file, data, size, 0) == static_cast<ssize_t>(size),
            "there is memory for the file");
    auto const exr = ZetTool::ExrFile::open("/proc/self/fd/" + std::to_string(file));
    constexpr int side = 1 << 12; // what a caller's check would let through
    if (!exr || exr->header().size.width > side || exr->header().size.height > side ||
        exr->header().bytes > side * side)
        return 0;
    auto picture = exr->read();
    if (!picture)
        return 0;
    std::vector<float> row(static_cast<std::size_t>(picture->width()));
    for (int y = 0; y < picture->height(); ++y)
        for (auto const channel : {EmbeddedHost::PictureChannel::Red, EmbeddedHost::PictureChannel::Blue}) {
            picture->readRow(y, 0, picture->width(), channel, row.data());
            require(std::none_of(row.begin(), row.end(), [](float v) { return v > 65504 || v < -65504; }),
                    "samples are no more than half-floats hold");
        }
    return 0;
}
