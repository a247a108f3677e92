#include "FrameRange.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <unordered_set>

namespace ZetTool {
namespace {

/// Reads one piece of a list from its front.
class Reader {
public:
    explicit Reader(std::string_view text) : rest(text) {}

    std::optional<int> number() {
        int value = 0;
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
        if (error != std::errc{})
            return std::nullopt;
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        return value;
    }

    bool take(char character) {
        if (rest.empty() || rest.front() != character)
            return false;
        rest.remove_prefix(1);
        return true;
    }

    bool atEnd() const { return rest.empty(); }

private:
    std::string_view rest;
};

struct Span {
    long first;
    long last;
    long step; // its sign leads from first to last

    long count() const { return (last - first) / step + 1; }
};

[[noreturn]] void refuse(std::string_view piece, std::string_view reason) {
    throw std::runtime_error(fmt::format("cannot read frame range \"{}\": {}", piece, reason));
}

Span parsePiece(std::string_view piece) {
    constexpr std::string_view expected = "expected FRAME, FIRST-LAST or FIRST-LASTxSTEP in whole numbers";
    Reader reader(piece);
    const auto first = reader.number();
    if (!first)
        refuse(piece, expected);
    if (reader.atEnd())
        return {*first, *first, 1};

    const auto last = reader.take('-') ? reader.number() : std::nullopt;
    if (!last)
        refuse(piece, expected);
    const bool down = *last < *first;
    if (reader.atEnd())
        return {*first, *last, down ? -1 : 1};

    const auto step = reader.take('x') ? reader.number() : std::nullopt;
    if (!step || !reader.atEnd())
        refuse(piece, expected);
    if (*step == 0)
        refuse(piece, "a step of 0 never ends");
    if (*step < 0 && !down && *first != *last)
        refuse(piece, fmt::format("a step of {} does not lead from {} to {}", *step, *first, *last));
    const long stride = std::labs(*step);
    return {*first, *last, down ? -stride : stride};
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    return first == text.npos ? std::string_view{}
                              : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace

std::vector<int> parseFrameRange(std::string_view text) {
    std::vector<int> frames;
    std::unordered_set<int> seen;
    long total = 0;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const std::string_view piece = trimmed(text.substr(begin, end - begin));
        const Span span = parsePiece(piece);
        total += span.count();
        if (total > maxFrames)
            refuse(piece, fmt::format("more than {} frames in one run", maxFrames));
        for (long i = 0; i < span.count(); ++i) {
            const int frame = static_cast<int>(span.first + i * span.step);
            if (seen.insert(frame).second)
                frames.push_back(frame);
        }
        begin = end + 1;
    }
    return frames;
}

std::string formatFrameRange(const std::vector<int>& frames) {
    std::string text;
    for (std::size_t begin = 0; begin < frames.size();) {
        std::size_t end = begin + 1;
        while (end < frames.size() && frames[end] - 1L == frames[end - 1])
            ++end;
        text += text.empty() ? "" : ",";
        text += std::to_string(frames[begin]);
        if (end - begin > 1)
            text += fmt::format("-{}", frames[end - 1]);
        begin = end;
    }
    return text;
}

} // namespace ZetTool
