#include "Picture.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <charconv>
#include <new>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace ZetTool {
namespace {

using Input = std::unique_ptr<OIIO::ImageInput>;

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason) {
    // Readers report one line for each damaged row; the first says it.
    const std::string line = reason.substr(0, reason.find('\n'));
    throw std::runtime_error(file.string() + ": " + (line.empty() ? "cannot be read as a picture" : line));
}

Input openPicture(const std::filesystem::path& file) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found)
        refuse(file, "does not exist");
    if (is_directory(status))
        refuse(file, "is a folder");

    OIIO::ImageSpec keepStraight;
    keepStraight.attribute("oiio:UnassociatedAlpha", 1);
    Input input = OIIO::ImageInput::open(file.string(), &keepStraight);
    if (!input)
        refuse(file, OIIO::geterror());
    if (input->spec().deep)
        refuse(file, "deep pictures are not supported; flatten it first");
    return input;
}

/// The pixel's samples that a writer is to see, or -1 for an alpha that is not there.
Picture::ChannelPlaces findChannels(const OIIO::ImageSpec& spec) {
    const auto named = [&](const char* name) {
        const auto& names = spec.channelnames;
        const auto found = std::find(names.begin(), names.end(), name);
        return found == names.end() ? -1 : static_cast<int>(found - names.begin());
    };
    int alpha = named("A");
    if (alpha < 0 && spec.alpha_channel < spec.nchannels)
        alpha = spec.alpha_channel;

    const Picture::ChannelPlaces byName{named("R"), named("G"), named("B"), alpha};
    if (*std::min_element(byName.begin(), byName.end() - 1) >= 0)
        return byName;

    std::vector<int> colours;
    for (int channel = 0; channel < spec.nchannels; ++channel)
        if (channel != alpha)
            colours.push_back(channel);
    if (colours.empty()) // a matte alone: shown as grey
        return {alpha, alpha, alpha, -1};
    if (colours.size() < 3)
        return {colours[0], colours[0], colours[0], alpha};
    return {colours[0], colours[1], colours[2], alpha};
}

/// The smallest run of channels that holds all of these, as begin and end.
std::pair<int, int> channelRun(const Picture::ChannelPlaces& places) {
    const bool hasAlpha = places.back() >= 0;
    const auto [first, last] =
        std::minmax_element(places.begin(), hasAlpha ? places.end() : places.end() - 1);
    return {*first, *last + 1};
}

PictureHeader describe(const OIIO::ImageSpec& spec) {
    PictureHeader header;
    header.size = {spec.full_width, spec.full_height};
    header.hasAlpha = findChannels(spec).back() >= 0;
    header.premultiplied = header.hasAlpha && spec.get_int_attribute("oiio:UnassociatedAlpha") == 0;
    header.floatSamples = spec.format.is_floating_point();
    header.colourSpace = spec.get_string_attribute("oiio:ColorSpace");
    return header;
}

} // namespace

std::string PictureSize::text() const { return std::to_string(width) + "x" + std::to_string(height); }

PictureSize parseSize(const std::string& text) {
    PictureSize size;
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec == std::errc{} && width.ptr != end && *width.ptr == 'x') {
        const auto height = std::from_chars(width.ptr + 1, end, size.height);
        if (height.ec == std::errc{} && height.ptr == end)
            return size;
    }
    throw std::runtime_error("cannot read size \"" + text + "\": expected WIDTHxHEIGHT, as in 1920x1080");
}

Picture::Picture(PictureHeader header, PixelBlock pixels, ChannelPlaces channelPlaces)
    : about(std::move(header)), block(std::move(pixels)), places(channelPlaces) {}

void Picture::readRow(int y, int x, int r, EmbeddedHost::PictureChannel channel, float* to) {
    const int row = height() - 1 - y - block.top; // the writer counts rows from the bottom
    const int inside = row >= 0 && row < block.size.height;
    const int first = inside ? std::clamp(block.left, x, r) : r;
    const int last = inside ? std::clamp(block.left + block.size.width, first, r) : r;

    const auto stride = static_cast<std::ptrdiff_t>(block.channels);
    to = std::fill_n(to, first - x, 0.0f);
    if (first < last) {
        const float* from =
            block.samples.get() +
            (static_cast<std::ptrdiff_t>(row) * block.size.width + first - block.left) * stride +
            places[static_cast<std::size_t>(channel)];
        for (int column = first; column < last; ++column, from += stride)
            *to++ = *from;
    }
    std::fill_n(to, r - last, 0.0f);
}

PictureHeader readPictureHeader(const std::filesystem::path& file) {
    return describe(openPicture(file)->spec());
}

Picture readPicture(const std::filesystem::path& file) {
    const Input input = openPicture(file);
    const OIIO::ImageSpec& spec = input->spec();
    // Of a picture with many layers, only the run of channels that holds ours is read.
    Picture::ChannelPlaces places = findChannels(spec);
    const auto [begin, end] = channelRun(places);
    for (int& place : places)
        place -= begin;

    PixelBlock block{
        spec.x - spec.full_x, spec.y - spec.full_y, {spec.width, spec.height}, end - begin, nullptr};
    try {
        block.samples.reset(new float[spec.image_pixels() * static_cast<std::size_t>(block.channels)]);
    } catch (const std::bad_alloc&) {
        refuse(file, "not enough memory for " + block.size.text() + " pixels");
    }
    const bool complete = input->read_image(0, 0, begin, end, OIIO::TypeFloat, block.samples.get());
    // Some readers fill up what a cut-off file lacks, and say so only here.
    if (!complete || input->has_error())
        refuse(file, input->geterror());
    return Picture(describe(spec), std::move(block), places);
}

void setPictureThreads(int threads) {
    OIIO::attribute("threads", threads);
    OIIO::attribute("exr_threads", threads > 1 ? threads : -1); // -1: decode on the calling thread
}

} // namespace ZetTool
