#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/mediafile/HeaderStreamBuilders.h>
#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

#include <numeric>

using namespace MediaConversion;
using namespace Zentrel;
using TestSupport::bytesOf;
using TestSupport::messageOf;
using TestSupport::TemporaryFolder;
using F = FullFrameFormat;
using P = PackedFrameFormat;
using Bytes = std::vector<std::uint8_t>;

namespace {

Bytes contentOf(std::stringstream const& stream) {
    std::string const text = stream.str();
    return Bytes(text.begin(), text.end());
}

/// A frame whose bytes count up, modulo 251.
template <class Frame>
std::unique_ptr<Frame> countingFrame(FrameFormat const& format, int rows, int columns) {
    auto frame = Frame::create(format, rows, columns);
    cv::Mat const image = frame->image();
    for (std::size_t i = 0; i < image.total() * image.elemSize(); ++i)
        image.data[i] = static_cast<std::uint8_t>(i % 251);
    return frame;
}

TEST(HeaderStreamBuilders, LayTheirFieldsOut) {
    auto builder = ZentrelHeaderStreamBuilder()
                       .magicBytes({1, 2, 3, 4})
                       .frameCount(5)
                       .targetFrameCount(6)
                       .majorVersion(1)
                       .minorVersion(8)
                       .mediaFormat(0x0C0B0A09)
                       .width(0x0E0D)
                       .height(0x100F);
    Bytes const version1{1, 2, 3, 4, 5, 6, 1, 8, 9, 10, 11, 12, 13, 14, 0, 0, 15, 16, 0, 0};
    EXPECT_EQ(contentOf(builder.build()), version1);

    Bytes version2 = version1;
    version2[6] = 2;
    version2.resize(40, 0);
    EXPECT_EQ(contentOf(builder.majorVersion(2).build()), version2);

    EXPECT_EQ(contentOf(ZentrelHeaderStreamBuilder().build()), Bytes(20, 0));
    EXPECT_EQ(contentOf(ZentrelHeaderStreamBuilder::modelYuv4kMediaHeader()),
              (Bytes{0x39, 0x7A, 0x74, 0x20, 1, 1, 1, 0, 8, 0, 0, 0, 0x00, 0x10, 0, 0, 0x70, 0x08, 0, 0}));
    EXPECT_EQ(contentOf(ZentrelFrameHeaderStreamBuilder().width(0x0201).height(0x0605).build()),
              (Bytes{1, 2, 1, 0, 5, 6, 0, 0}));
    EXPECT_EQ(contentOf(ZentrelFrameHeaderStreamBuilder().flags(0x0403).build()),
              (Bytes{0, 0, 3, 4, 0, 0, 0, 0}));
}

TEST(MediaFileWriter, MarksEachFormatThatItWrites) {
    std::pair<FrameFormat, std::uint32_t> const expected[] = {
        {F::RGB_U8(), 0x200},
        {F::BGR_U8(), 0x202},
        {F::RGBA_U8(), 0x204},
        {F::BGRA_U8(), 0x206},
        {P::YCBCR_ITU_T871_YUYV_422_U8(), 0x8},
        {P::YCBCR_ITU_T871_9ZT_422_U10(), 0x1108},
        {P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(), 0x1100C},
        {P::YCBCR_ITU_T871_9ZT_420_U8(), 0x40},
        {P::RGB_DPX_FILLED_U10(), 0x1200},
        {P::BGR_DPX_FILLED_U10(), 0x1202},
        {P::RGB_SMPTE_2110_U12(), 0x10200},
        {P::BGR_SMPTE_2110_U12(), 0x10202},
        {P::YCOCG_DXT5_U8(), 0x20000000},
        {P::RGB_DXT1_U8(), 0x83F0},
    };
    EXPECT_EQ(ZentrelMediaFileWriter::mediaHeaderFormat.size(), std::size(expected));

    TemporaryFolder const folder;
    FileStreamFactory files;
    for (auto const& [format, bits] : expected) {
        std::unique_ptr<IImageFrame> frame;
        if (FullFrame::is(format))
            frame = countingFrame<FullFrame>(format, 4, 8);
        else
            frame = countingFrame<PackedFrame>(format, 4, 8);
        cv::Mat const image = frame->image();
        Bytes pixels(image.data, image.data + image.total() * image.elemSize());
        ZentrelMediaFileWriter(files).writeFrame(folder / "frame.zet", std::move(frame));

        auto const byte = [bits = bits](int shift) { return static_cast<std::uint8_t>(bits >> shift); };
        Bytes file{'9', 'z', 't', ' ', 1, 1, 1, 0, byte(0), byte(8), byte(16), byte(24), 8, 0,
                   0,   0,   4,   0,   0, 0, 8, 0, 1,       0,       4,        0,        0, 0};
        file.insert(file.end(), pixels.begin(), pixels.end());
        EXPECT_EQ(bytesOf(folder / "frame.zet"), file) << FrameFormat::toString(format);
    }
}

TEST(MediaFileWriter, WritesTheRowsOfAMatrixWithGapsWithoutThem) {
    TemporaryFolder const folder;
    FileStreamFactory files;
    auto const whole = countingFrame<FullFrame>(F::RGB_U8(), 4, 8);
    cv::Mat const part = whole->image()(cv::Rect(2, 1, 3, 2));
    ASSERT_FALSE(part.isContinuous());
    ZentrelMediaFileWriter(files).writeFrame(
        folder / "part.zet", std::make_unique<FullFrame>(F::RGB_U8(), part, Frame::Origin::TopLeft));
    Bytes file = bytesOf(folder / "part.zet");
    file.erase(file.begin(), file.begin() + 28);
    EXPECT_EQ(file, (Bytes{30, 31, 32, 33, 34, 35, 36, 37, 38, 54, 55, 56, 57, 58, 59, 60, 61, 62}));
}

TEST(MediaFileWriter, KeepsTheLowBitsOfLargeSizes) {
    TemporaryFolder const folder;
    FileStreamFactory files;
    ZentrelMediaFileWriter(files).writeFrame(folder / "wide.zet", FullFrame::create(F::RGB_U8(), 1, 70000));
    Bytes const file = bytesOf(folder / "wide.zet");
    EXPECT_EQ(file.size(), 28u + 210000u);
    for (std::size_t const offset : {12, 20}) {
        EXPECT_EQ(file[offset], 4464 & 0xFF);
        EXPECT_EQ(file[offset + 1], 4464 >> 8);
    }
}

TEST(MediaFileWriter, TakesWideNamesAsUtf8WhateverTheLocale) {
    TemporaryFolder const folder;
    FileStreamFactory files;
    ZentrelMediaFileWriter writer(files);
    std::wstring const prefix = folder.path().wstring() + L"/";
    writer.writeFrame(prefix + L"caf\u00e9 \u65e5 \U0001F3AC.zet", FullFrame::create(F::RGB_U8(), 1, 1));
    EXPECT_TRUE(std::filesystem::exists(folder / "caf\xc3\xa9 \xe6\x97\xa5 \xf0\x9f\x8e\xac.zet"));

    for (wchar_t const invalid : {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000)})
        EXPECT_THAT(messageOf<std::filesystem::filesystem_error>(
                        [&] { writer.writeFrame(prefix + invalid, FullFrame::create(F::RGB_U8(), 1, 1)); }),
                    testing::HasSubstr("Cannot convert character sequence"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1)
        << "no file was touched";
}

/// Where a stream fails.
enum class Fault { None, Open, HeaderWrite, PixelWrite, Close, Exception };

/// A stream that keeps what is written to it and fails where it is told to.
class FaultyStream final : public IFileStream {
public:
    explicit FaultyStream(Fault fault) : fault(fault) {}

    void clear() override { failed = false; }
    bool fail() const override { return failed; }
    bool good() const override { return !failed; }
    bool eof() const override { return false; }
    std::streamsize gcount() const override { return 0; }
    void read(char*, std::streamsize) override { failed = true; }
    void write(const char*, std::streamsize) override {
        ++writes;
        if (fault == Fault::Exception)
            throw std::ios_base::failure("the cable is out");
        failed = failed || (fault == Fault::HeaderWrite && writes == 1) ||
                 (fault == Fault::PixelWrite && writes > 1);
    }
    void seekg(std::streampos) override {}
    void seekg(std::streamoff, std::ios_base::seekdir) override {}
    std::streampos tellg() override { return 0; }
    void open(const char*, std::ios_base::openmode) override { opened = fault != Fault::Open; }
    void open(std::string const&, std::ios_base::openmode mode) override { open("", mode); }
    void open(std::filesystem::path const&, std::ios_base::openmode mode) override { open("", mode); }
    bool is_open() const override { return opened; }
    void close() override { failed = failed || fault == Fault::Close; }

private:
    Fault fault;
    bool opened = false;
    bool failed = false;
    int writes = 0;
};

struct FaultyFactory final : IFileStreamFactory {
    explicit FaultyFactory(Fault fault) : fault(fault) {}
    std::unique_ptr<IFileStream> create() override { return std::make_unique<FaultyStream>(fault); }
    Fault fault;
};

/// A frame in no memory that the writer knows.
struct ElsewhereFrame final : ITextureFrame {
    FrameFormat format() const override { return F::RGB_U8(); }
    int rows() const override { return 2; }
    int cols() const override { return 2; }
};

TEST(MediaFileWriter, ReportsEveryFailureWithThePath) {
    auto const rgb = [] { return FullFrame::create(F::RGB_U8(), 2, 2); };
    std::uint8_t pixel[4] = {};
    cv::Mat const huge(8192, 65536, CV_8UC4, pixel); // a header alone: its 2^31 bytes are counted, not read
    struct {
        Fault fault;
        std::unique_ptr<IFrame> frame;
        const char* message;
    } cases[] = {
        {Fault::None, nullptr, "no frame data"},
        {Fault::None, std::make_unique<FullFrame>(F::RGB_U8()), "No image data to write"},
        {Fault::None, std::make_unique<ElsewhereFrame>(), "No image data to write"},
        {Fault::Open, rgb(), "Failed to open file"},
        {Fault::None, PackedFrame::create(P::RGB_DPX_PACKED_U12(), 2, 2),
         "Frame writing is not supported for format RGB_U12_RGB-DPX-PACKED"},
        {Fault::None, FullFrame::create(F::RGB_F32(), 2, 2),
         "Frame writing is not supported for format RGB_F32_RGB"},
        {Fault::None, std::make_unique<FullFrame>(F::RGBA_U8(), huge, Frame::Origin::TopLeft),
         "Image data of 2147483648 bytes is too large, a media file holds at most 2147483647"},
        {Fault::HeaderWrite, rgb(), "Failed to write file"},
        {Fault::PixelWrite, rgb(), "Failed to write file"},
        {Fault::Close, rgb(), "Failed to write file"},
    };
    for (auto& row : cases) {
        FaultyFactory factory(row.fault);
        try {
            ZentrelMediaFileWriter(factory).writeFrame("/some/where.zet", std::move(row.frame));
            ADD_FAILURE() << row.message;
        } catch (MediaFileAccessException const& exception) {
            EXPECT_STREQ(exception.what(), row.message);
            EXPECT_EQ(exception.filePath(), "/some/where.zet");
        }
    }
    FaultyFactory throwing(Fault::Exception);
    EXPECT_THAT(messageOf<MediaFileAccessException>(
                    [&] { ZentrelMediaFileWriter(throwing).writeFrame("a.zet", rgb()); }),
                testing::HasSubstr("the cable is out"));
}

TEST(MediaFileWriter, NoticesWhatTheSystemRefuses) {
    TemporaryFolder const folder;
    FileStreamFactory files;
    auto const write = [&](std::filesystem::path const& path, int rows) {
        return messageOf<MediaFileAccessException>([&] {
            ZentrelMediaFileWriter(files).writeFrame(path, FullFrame::create(F::RGB_U8(), rows, 100));
        });
    };
    EXPECT_EQ(write(folder / "missing/frame.zet", 1), "Failed to open file");
    EXPECT_EQ(write(folder.path(), 1), "Failed to open file");
    for (int const rows : {1, 1000}) // the small one is lost only when the stream is closed
        EXPECT_EQ(write("/dev/full", rows), "Failed to write file");
}

} // namespace
