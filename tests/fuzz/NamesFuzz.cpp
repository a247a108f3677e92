// Frame ranges and sequence patterns from any text.
#include <tests/fuzz/Require.h>
#include <tools/zet/FrameRange.h>
#include <tools/zet/SequencePattern.h>

#include <climits>
#include <regex>
#include <stdexcept>
#include <unordered_set>

using namespace ZetTool;

namespace {

/// Reads `text`, if it can be read; a refusal names what it refuses.
template <class Read>
bool accepted(Read const& read) {
    try {
        read();
        return true;
    } catch (std::runtime_error const& refusal) {
        require(std::string(refusal.what()).find('"') != std::string::npos,
                "a refusal quotes what it is about");
        return false;
    }
}

/// Ranges of many frames take their time and say nothing new; the limits of numbers have ten digits.
bool namesManyFrames(std::string const& text) {
    static const std::regex longNumber("(^|\\D)\\d{5,9}($|\\D)");
    return text.size() > 64 || std::regex_search(text, longNumber);
}

void tryAsRange(std::string const& text) {
    std::vector<int> frames;
    if (!accepted([&] { frames = parseFrameRange(text); }))
        return;
    require(!frames.empty() && frames.size() <= std::size_t{maxFrames}, "a range has 1 to maxFrames frames");
    require(std::unordered_set<int>(frames.begin(), frames.end()).size() == frames.size(),
            "each frame comes once");
    require(parseFrameRange(formatFrameRange(frames)) == frames, "a printed range reads the same");
}

void tryAsPattern(std::string const& text) {
    if (text.find('\0') != std::string::npos)
        return; // no name of a file
    accepted([&] {
        SequencePattern const pattern(text);
        for (int const number : {0, 7, -3, 123456, INT_MAX, INT_MIN}) {
            auto const path = pattern.frame(number);
            require(path.parent_path() == pattern.path().parent_path(), "frames stay in their folder");
            if (pattern.hasField())
                require(pattern.numberOf(path.filename().string()) == number,
                        "a frame's name tells its number");
            else
                require(path == pattern.path(), "without a field all frames have the name");
        }
        if (auto const number = pattern.numberOf(text))
            require(pattern.frame(*number).filename() == text,
                    "only names that the pattern makes are its frames");
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(data, data + size);
    if (!namesManyFrames(text))
        tryAsRange(text);
    tryAsPattern(text);
    return 0;
}
