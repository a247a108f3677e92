#include "MediaFileOutput.h"

#include "Guarded.h"
#include "ImageFormat.h"
#include "IoProxyStream.h"
#include "PictureSpec.h"

#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <pictures/DisplayedPicture.h>
#include <pictures/FormatChoice.h>
#include <pictures/FrameConversion.h>
#include <pictures/MediaFileShape.h>
#include <pictures/OutputFile.h>
#include <pictures/Transfer.h>

#include <algorithm>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

namespace ZetImageIo {
namespace {

/// An attribute as text, whatever its type: 422 is a number to those who set it.
std::string textOf(const OIIO::ImageSpec& spec, const char* attribute, const char* otherwise) {
    const OIIO::ParamValue* const value = spec.find_attribute(attribute);
    return value ? value->get_string() : otherwise;
}

void refuseWhatNoFileHolds(const OIIO::ImageSpec& spec, OIIO::ImageOutput::OpenMode mode) {
    if (mode != OIIO::ImageOutput::Create)
        throw std::runtime_error("a media file holds one picture, none can be added");
    if (spec.deep || spec.depth > 1)
        throw std::runtime_error("media files hold neither deep pictures nor volumes");
    if (spec.width < 1 || spec.height < 1 || spec.nchannels < 1)
        throw std::runtime_error("a picture of " + std::to_string(spec.width) + "x" +
                                 std::to_string(spec.height) + " pixels with " +
                                 std::to_string(spec.nchannels) + " channels cannot be written");
}

OIIO::ImageSpec completed(OIIO::ImageSpec spec) {
    if (spec.full_width < 1 || spec.full_height < 1) {
        std::tie(spec.full_x, spec.full_y) = {spec.x, spec.y};
        std::tie(spec.full_width, spec.full_height) = {spec.width, spec.height};
    }
    return spec;
}

} // namespace

/// The file that is being written.
struct MediaFileOutput::Job {
    Job(std::string name, const OIIO::ImageSpec& spec)
        : path(std::move(name)),
          format(ZetTool::findOutputFormat(textOf(spec, "zet:format", "0"))),
          header(describe(spec)),
          places(findChannels(spec)),
          shape(format, header.size),
          settings{ZetTool::chooseTransfer(ZetTool::parseTransferChoice(textOf(spec, "zet:transfer", "auto")),
                                           header),
                   header.premultiplied},
          block{spec.x - spec.full_x, spec.y - spec.full_y, {spec.width, spec.height}, spec.nchannels} {
        block.allocate();
    }

    /// Takes one row of float samples.
    void add(const float* row) {
        const std::size_t samples = std::size_t(block.size.width) * std::size_t(block.channels);
        std::copy_n(row, samples,
                    reinterpret_cast<float*>(block.samples->data()) + samples * std::size_t(rows++));
    }

    void write(OIIO::Filesystem::IOProxy* proxy) {
        if (rows < block.size.height)
            throw std::runtime_error("only " + std::to_string(rows) + " of " +
                                     std::to_string(block.size.height) + " rows came; no file was written");
        ZetTool::Picture picture(header, std::move(block), places);
        auto frame = ZetTool::convertFrame(ZetTool::displayedFrame(picture, settings), format.format());
        StreamFactory streams(proxy);
        MediaConversion::ZentrelMediaFileWriter writer(streams);
        if (proxy)
            return writer.writeFrame(path, std::move(frame));
        ZetTool::OutputFile file(path);
        try {
            writer.writeFrame(file.temporary(), std::move(frame));
        } catch (const std::exception& error) {
            throw std::runtime_error(path + ": " + error.what() +
                                     (file.diskIsFull(shape.bytes()) ? "; the disk is full" : ""));
        }
        file.commit(shape.bytes());
    }

    const std::string path;
    const OutputFormat& format;
    const ZetTool::PictureHeader header;
    const ZetTool::Picture::ChannelPlaces places;
    const ZetTool::MediaFileShape shape;
    const EmbeddedHost::RenderSettings settings;
    ZetTool::PixelBlock block;
    int rows = 0; ///< that have come
};

MediaFileOutput::MediaFileOutput() = default;
MediaFileOutput::~MediaFileOutput() { close(); }

const char* MediaFileOutput::format_name() const { return formatName; }

int MediaFileOutput::supports(OIIO::string_view feature) const {
    // Of many channels, those that a media file can hold are taken.
    return feature == "alpha" || feature == "nchannels" || feature == "ioproxy";
}

bool MediaFileOutput::open(const std::string& name, const OIIO::ImageSpec& spec, OpenMode mode) {
    if (job)
        close();
    return guarded(*this, [&] {
        refuseWhatNoFileHolds(spec, mode);
        m_spec = completed(spec);
        auto next = std::make_unique<Job>(name, m_spec);
        ioproxy_retrieve_from_config(m_spec);
        if (!ioproxy())
            ZetTool::checkOutputFolder(name);
        job = std::move(next);
        m_spec.set_format(OIIO::TypeFloat); // in which rows are to come
        m_spec.tile_width = m_spec.tile_height = m_spec.tile_depth = 0;
    });
}

bool MediaFileOutput::write_scanline(int y, int, OIIO::TypeDesc format, const void* data,
                                     OIIO::stride_t xstride) {
    return guarded(*this, [&] {
        if (!job)
            throw std::runtime_error("no file is open");
        if (job->rows == m_spec.height)
            throw std::runtime_error("row " + std::to_string(y) + " came after the last one");
        if (y != m_spec.y + job->rows)
            throw std::runtime_error("row " + std::to_string(y) + " came, expected row " +
                                     std::to_string(m_spec.y + job->rows));
        std::vector<unsigned char> scratch;
        job->add(static_cast<const float*>(to_native_scanline(format, data, xstride, scratch)));
    });
}

bool MediaFileOutput::close() {
    const auto finished = std::move(job);
    const bool written = !finished || guarded(*this, [&] { finished->write(ioproxy()); });
    ioproxy_clear();
    return written;
}

} // namespace ZetImageIo
