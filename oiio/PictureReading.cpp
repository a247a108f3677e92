#include "PictureReading.h"

#include "ImageFormat.h"
#include "PictureSpec.h"
#include "Threads.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

using ZetTool::Picture;
using ZetTool::PictureHeader;
using ZetTool::PixelBlock;

namespace ZetImageIo {
namespace {

using Input = std::unique_ptr<OIIO::ImageInput>;

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason) {
    // Readers report one line for each damaged row; the first says it.
    const std::string line = reason.substr(0, reason.find('\n'));
    throw std::runtime_error(file.string() + ": " + (line.empty() ? "cannot be read as a picture" : line));
}

Input openPicture(const std::filesystem::path& file) {
    declareInput();
    OIIO::ImageSpec keepStraight;
    keepStraight.attribute("oiio:UnassociatedAlpha", 1);
    Input input = OIIO::ImageInput::open(file.string(), &keepStraight);
    if (!input)
        refuse(file, OIIO::geterror());
    if (input->spec().deep)
        refuse(file, "deep pictures are not supported; flatten it first");
    return input;
}

} // namespace

PictureHeader readPictureHeader(const std::filesystem::path& file) {
    return describe(openPicture(file)->spec());
}

Picture readPicture(const std::filesystem::path& file, const ZetTool::HeaderCheck& check,
                    IMemoryPool& memory) {
    shareThreads();
    const Input input = openPicture(file);
    const OIIO::ImageSpec& spec = input->spec();
    const PictureHeader header = describe(spec);
    if (check)
        check(header);
    Picture::ChannelPlaces places = findChannels(spec);
    const auto [begin, end] = channelRun(places);
    for (int& place : places)
        place -= begin;

    PixelBlock block = blockOf(spec);
    try {
        block.allocate(memory);
    } catch (const std::bad_alloc&) {
        refuse(file, "not enough memory for " + block.size.text() + " pixels");
    }
    // What a reader leaves out without a word shall be black, not a part of an earlier picture.
    std::fill_n(block.samples->data(), block.bytes(), std::uint8_t{0});
    // Half-floats are asked for by no name: then they come as they are, without a copy.
    const bool complete = input->read_image(
        0, 0, begin, end, block.halfFloats ? OIIO::TypeUnknown : OIIO::TypeFloat, block.samples->data());
    // Some readers fill up what a cut-off file lacks, and say so only here.
    if (!complete || input->has_error())
        refuse(file, input->geterror());
    return Picture(header, std::move(block), places);
}

} // namespace ZetImageIo
