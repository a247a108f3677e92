// Writes many frames through the plug-in, as a night's run does, and watches what the process holds on to.
//
//   soak FOLDER SMALL LARGE    so many frames of 160 x 88 pixels, then so many of 7680 x 4320
#include <host/EmbeddedHost.h>
#include <plugin/OutputFormats.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class FlatPicture final : public EmbeddedHost::PictureSource {
public:
    FlatPicture(int columns, int rows) : columns(columns), rows(rows) {}

    int width() const override { return columns; }
    int height() const override { return rows; }
    bool hasAlpha() const override { return true; }
    void readRow(int y, int x, int r, EmbeddedHost::PictureChannel, float* to) override {
        std::fill_n(to, r - x, static_cast<float>(y) / static_cast<float>(rows));
    }

private:
    int columns, rows;
};

struct Held {
    long kilobytes;
    long descriptors;
};

Held held() {
    long pages = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    const auto descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), {});
    return {resident * ::sysconf(_SC_PAGESIZE) / 1024, static_cast<long>(descriptors)};
}

/// Writes the frames, each format in turn. False when memory grows after the first tenth of them, or a
/// descriptor stays open.
bool write(const fs::path& file, FlatPicture picture, int frames) {
    EmbeddedHost::WriteNode node("zet");
    const int tenth = std::max(frames / 10, static_cast<int>(outputFormats.size()));
    Held settled{};
    long highest = 0;
    for (int frame = 1; frame <= frames; ++frame) {
        node.setMenu("Output format",
                     static_cast<int>(static_cast<std::size_t>(frame) % outputFormats.size()));
        const auto result = node.render(picture, file);
        if (!result.succeeded()) {
            std::fprintf(stderr, "frame %d: %s\n", frame, result.criticalErrors.front().c_str());
            return false;
        }
        if (frame <= tenth) { // with every format, memory has been at its highest
            const Held now = held();
            settled = {std::max(settled.kilobytes, now.kilobytes), now.descriptors};
        } else {
            highest = std::max(highest, held().kilobytes);
        }
        if (frame % tenth == 0)
            std::printf("%d x %d, frame %d: %ld kB resident, %ld descriptors\n", picture.width(),
                        picture.height(), frame, held().kilobytes, held().descriptors);
    }
    const long allowed = settled.kilobytes + settled.kilobytes / 100 + 1024;
    if (frames > tenth && (highest > allowed || held().descriptors != settled.descriptors)) {
        std::fprintf(stderr,
                     "at most %ld kB and %ld descriptors were expected, but there were %ld kB and %ld\n",
                     allowed, settled.descriptors, highest, held().descriptors);
        return false;
    }
    return true;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::fprintf(stderr, "soak FOLDER SMALL LARGE\n");
        return 2;
    }
    try {
        EmbeddedHost::loadPlugin(ZET_PLUGIN_FILE);
        const fs::path file = fs::path(arguments[1]) / "soak.zet";
        const bool flat = write(file, {160, 88}, std::atoi(arguments[2])) &&
                          write(file, {7680, 4320}, std::atoi(arguments[3]));
        fs::remove(file);
        return flat ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
}
