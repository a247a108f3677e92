#include "PictureFile.h"

#include "ExrFile.h"

#include <oiio/ImageFormat.h>
#include <pictures/PictureSpec.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <system_error>

#include <unistd.h>

namespace ZetTool {
namespace {

using Input = std::unique_ptr<OIIO::ImageInput>;

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason) {
    // Readers report one line for each damaged row; the first says it.
    const std::string line = reason.substr(0, reason.find('\n'));
    throw std::runtime_error(file.string() + ": " + (line.empty() ? "cannot be read as a picture" : line));
}

void checkReadable(const std::filesystem::path& file) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found)
        refuse(file, "does not exist");
    if (is_directory(status))
        refuse(file, "is a folder");
    if (::access(file.c_str(), R_OK) != 0)
        refuse(file, std::generic_category().message(errno));
    if (exists(status) && !is_regular_file(status)) // whose reader may wait for ever
        refuse(file, "is a device, pipe or socket, not a file");
}

Input openPicture(const std::filesystem::path& file) {
    ZetImageIo::declareInput();
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
    checkReadable(file);
    if (const auto exr = ExrFile::open(file))
        return exr->header();
    return describe(openPicture(file)->spec());
}

Picture readPicture(const std::filesystem::path& file, const HeaderCheck& check) {
    checkReadable(file);
    if (const auto exr = ExrFile::open(file)) {
        if (check)
            check(exr->header());
        if (auto picture = exr->read())
            return std::move(*picture);
    } // which does not say what is wrong

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
        block.allocate();
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

void setPictureThreads(int threads) {
    OIIO::attribute("threads", threads);
    OIIO::attribute("exr_threads", threads > 1 ? threads : -1); // -1: decode on the calling thread
}

} // namespace ZetTool
