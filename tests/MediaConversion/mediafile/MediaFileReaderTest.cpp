#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/mediafile/HeaderStreamBuilders.h>
#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>
#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <tests/TestSupport.h>

#include <sys/stat.h>

#include <algorithm>

using namespace MediaConversion;
using namespace Zentrel;
using TestSupport::bytesOf;
using TestSupport::TemporaryFolder;
using F = FullFrameFormat;
using P = PackedFrameFormat;
using Bytes = std::vector<std::uint8_t>;

namespace {

// ---- Files in memory ----

/// What the n-th operation of a stream does instead of its work.
struct Fault {
    enum Kind { None, Fails, ReadsLess, Throws } kind = None;
    int operation = -1;
};

/// A file of the given bytes. It may claim to be longer.
class MemoryStream final : public IFileStream {
public:
    MemoryStream(Bytes bytes, std::uint64_t length, Fault fault)
        : bytes(std::move(bytes)), length(length), fault(fault) {}

    void clear() override { failed = false; }
    bool fail() const override { return failed; }
    bool good() const override { return !failed; }
    bool eof() const override { return false; }
    std::streamsize gcount() const override { return lastCount; }
    void read(char* data, std::streamsize count) override {
        std::size_t const left = position < bytes.size() ? bytes.size() - position : 0;
        std::size_t available = std::min(static_cast<std::size_t>(count), left);
        if (faulty())
            available = fault.kind == Fault::ReadsLess ? available / 2 : 0;
        failed = failed || available != static_cast<std::size_t>(count);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), available, data);
        lastCount = static_cast<std::streamsize>(available);
        position += available;
    }
    void write(const char*, std::streamsize) override { failed = true; }
    void seekg(std::streampos target) override {
        failed = faulty() || failed;
        position = static_cast<std::size_t>(std::streamoff{target});
    }
    void seekg(std::streamoff offset, std::ios_base::seekdir) override {
        failed = faulty() || failed;
        position = length + static_cast<std::size_t>(offset);
    }
    std::streampos tellg() override { return faulty() ? -1 : static_cast<std::streamoff>(position); }
    void open(const char*, std::ios_base::openmode) override { opened = !faulty(); }
    void open(std::string const&, std::ios_base::openmode mode) override { open("", mode); }
    void open(std::filesystem::path const&, std::ios_base::openmode mode) override { open("", mode); }
    bool is_open() const override { return opened; }
    void close() override {}

private:
    bool faulty() {
        bool const now = operations++ == fault.operation;
        if (now && fault.kind == Fault::Throws)
            throw std::ios_base::failure("the cable is out");
        return now;
    }

    Bytes bytes;
    std::uint64_t length;
    Fault fault;
    std::size_t position = 0;
    std::streamsize lastCount = 0;
    int operations = 0;
    bool opened = false;
    bool failed = false;
};

struct MemoryFile final : IFileStreamFactory {
    explicit MemoryFile(Bytes content, Fault streamFault = {})
        : bytes(std::move(content)), length(bytes.size()), fault(streamFault) {}
    std::unique_ptr<IFileStream> create() override {
        return std::make_unique<MemoryStream>(bytes, length, fault);
    }

    Bytes bytes;
    std::uint64_t length;
    Fault fault;
};

/// A file whose pixel bytes count up from 1.
Bytes fileOf(FrameFormat const& format, std::uint16_t width, std::uint16_t height, std::size_t pixelBytes,
             std::uint8_t majorVersion = 1) {
    std::string const headers =
        ZentrelHeaderStreamBuilder()
            .magicBytes(ZentrelHeaderStreamBuilder::mediaFileMagic)
            .frameCount(1)
            .targetFrameCount(1)
            .majorVersion(majorVersion)
            .mediaFormat(ZentrelMediaFileWriter::ZentrelMediaHeaderFormatBitMask(format))
            .width(width)
            .height(height)
            .build()
            .str() +
        ZentrelFrameHeaderStreamBuilder().width(width).height(height).build().str();
    Bytes file(headers.begin(), headers.end());
    for (std::size_t i = 1; i <= pixelBytes; ++i)
        file.push_back(static_cast<std::uint8_t>(i));
    return file;
}

/// 4 x 2 pixels in 44 bytes.
Bytes smallFile(std::uint8_t majorVersion = 1) {
    return fileOf(P::YCBCR_ITU_T871_YUYV_422_U8(), 4, 2, 16, majorVersion);
}

/// What the reader says against the file; empty when it takes it. Both operations must say the same.
std::string refusalOf(IFileStreamFactory& files, std::filesystem::path const& path = "some/where.zet") {
    auto const messageOf = [&path](auto const& read) -> std::string {
        try {
            read();
            return {};
        } catch (MediaFileAccessException const& exception) {
            EXPECT_EQ(exception.filePath(), path.string());
            return exception.what();
        }
    };
    ZentrelMediaFileReader reader(files);
    std::string const message = messageOf([&] { reader.readFrame(path); });
    EXPECT_EQ(messageOf([&] { reader.readInfo(path); }), message);
    return message;
}

std::string refusalOf(Bytes const& bytes) {
    MemoryFile file(bytes);
    return refusalOf(file);
}

Bytes pixelsOf(IImageFrame const& frame) {
    cv::Mat const image = frame.image();
    return Bytes(image.data, image.data + image.total() * image.elemSize());
}

// ---- Files that are right ----

TEST(MediaFileReader, ReadsBackWhatTheWriterWrites) {
    TemporaryFolder const folder;
    FileStreamFactory files;
    auto const path = folder / "frame.zet";
    for (auto const& [format, bits] : ZentrelMediaFileWriter::mediaHeaderFormat) {
        SCOPED_TRACE(FrameFormat::toString(format));
        std::unique_ptr<IImageFrame> frame;
        if (FullFrame::is(format))
            frame = FullFrame::create(format, 4, 8);
        else
            frame = PackedFrame::create(format, 4, 8);
        cv::Mat const image = frame->image();
        for (std::size_t i = 0; i < image.total() * image.elemSize(); ++i)
            image.data[i] = static_cast<std::uint8_t>(i * 7);
        Bytes const pixels = pixelsOf(*frame);
        ZentrelMediaFileWriter(files).writeFrame(path, std::move(frame));

        ZentrelMediaFileInfo const info = ZentrelMediaFileReader(files).readInfo(path);
        EXPECT_EQ(info.format, format);
        EXPECT_EQ(info.mediaFormat, bits);
        EXPECT_EQ(info.width, 8);
        EXPECT_EQ(info.height, 4);
        EXPECT_EQ(info.fileBytes, 28 + pixels.size());

        auto const result = ZentrelMediaFileReader(files).readFrame(path);
        EXPECT_EQ(result->format(), format);
        EXPECT_EQ(result->rows(), 4);
        EXPECT_EQ(result->cols(), 8);
        EXPECT_EQ(pixelsOf(*result), pixels);
        EXPECT_EQ(pixelsOf(*result->clone()), pixels);
        // The pixels lie in the file that was read, at their place in it.
        MemoryAccess const& wholeFile = result->rawFrameData().rawData();
        EXPECT_EQ(wholeFile.dataSize(), 28 + pixels.size());
        EXPECT_EQ(result->image().data, wholeFile.data() + 28);
    }
}

/// Behind the headers, elements of four and eight bytes lie at odd places.
TEST(MediaFileReader, GivesFramesThatConvertersTake) {
    for (auto const& [format, bits] : ZentrelMediaFileWriter::mediaHeaderFormat) {
        if (!Encoder::encodingSteps.count({format, F::BGRA_F32()}))
            continue;
        SCOPED_TRACE(FrameFormat::toString(format));
        std::size_t const pixelBytes =
            format.pixelPacking.bytes() * 8 * 4 /
            (format.pixelPacking.pixels().rows * format.pixelPacking.pixels().columns);
        MemoryFile file(fileOf(format, 8, 4, pixelBytes));
        auto const decoded = [&format = format](std::unique_ptr<IFrame> frame) {
            Encoder encoder(format, F::BGRA_F32());
            FrameSinkDestination sink;
            encoder.connect(&sink);
            encoder.start();
            encoder.encodeFrame(std::move(frame));
            auto const result = sink.frame();
            return pixelsOf(dynamic_cast<IImageFrame&>(*result));
        };
        auto frame = ZentrelMediaFileReader(file).readFrame("a.zet");
        cv::Mat const copy = frame->image().clone();
        std::unique_ptr<IFrame> same;
        if (FullFrame::is(format))
            same = std::make_unique<FullFrame>(format, copy, Frame::Origin::TopLeft);
        else
            same = std::make_unique<PackedFrame>(format, copy, Frame::Origin::TopLeft);
        EXPECT_EQ(decoded(std::move(frame)), decoded(std::move(same)));
    }
}

TEST(MediaFileReader, KnowsWhereThePixelsOfEachVersionBegin) {
    for (int const version : {1, 2, 3, 255}) {
        auto const majorVersion = static_cast<std::uint8_t>(version);
        MemoryFile file(smallFile(majorVersion));
        file.bytes[7] = 9;
        ZentrelMediaFileInfo const info = ZentrelMediaFileReader(file).readInfo("a.zet");
        EXPECT_EQ(info.pixelOffset, version < 2 ? 28u : 48u);
        EXPECT_EQ(info.majorVersion, majorVersion);
        EXPECT_EQ(info.minorVersion, 9);
        EXPECT_EQ(info.frameCount, 1);
        EXPECT_EQ(info.targetFrameCount, 1);
        EXPECT_EQ(info.frameFlags, 1);
        EXPECT_EQ(pixelsOf(*ZentrelMediaFileReader(file).readFrame("a.zet")),
                  (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}));
    }
}

TEST(MediaFileReader, GivesFramesThatOutliveTheReaderAndItsFiles) {
    std::vector<std::unique_ptr<IImageFrame>> frames;
    for (std::uint8_t i = 0; i < 10; ++i) {
        MemoryFile file(smallFile());
        std::fill(file.bytes.begin() + 28, file.bytes.end(), i);
        frames.push_back(ZentrelMediaFileReader(file).readFrame("a.zet"));
        ImageFrame::setMemoryPool(std::make_shared<SelfPruningMemoryPool<HostMemoryResource, true>>(3));
    }
    ImageFrame::setMemoryPool(nullptr);
    for (std::uint8_t i = 0; i < 10; ++i)
        EXPECT_EQ(pixelsOf(*frames[i]), Bytes(16, i));
}

// ---- Files that are not ----

TEST(MediaFileReader, NamesTheFieldThatIsWrong) {
    struct {
        std::vector<std::pair<std::size_t, std::uint8_t>> bytes;
        const char* message;
    } const version1[] = {
        {{{0, 0x89}, {1, 'P'}}, "Magic at offset 0 is 89 50 74 20, expected 39 7A 74 20, \"9zt \""},
        {{{3, 0}}, "Magic at offset 0 is 39 7A 74 00, expected 39 7A 74 20, \"9zt \""},
        {{{4, 0}}, "Frame count at offset 4 is 0, expected 1"},
        {{{4, 25}}, "Frame count at offset 4 is 25, expected 1"},
        {{{5, 2}}, "Target frame count at offset 5 is 2, expected 1"},
        {{{6, 0}}, "Major version at offset 6 is 0, expected 1 or more"},
        {{{6, 2}}, "File of 44 bytes is too short for its headers, expected 48 or more"},
        {{{8, 0x09}, {11, 0xA0}},
         "Media format at offset 8 is 0xA0000009, expected one of 0x00000202 0x00000200 0x000083F0 "
         "0x00001202 "
         "0x00001200 0x00010202 0x00010200 0x00000206 0x00000204 0x00000008 0x00000040 0x00001108 0x0001100C "
         "0x20000000"},
        {{{12, 6}}, "Frame width at offset 20 is 4, expected 6 as in the file header"},
        {{{13, 1}}, "Frame width at offset 20 is 4, expected 260 as in the file header"},
        {{{14, 1}}, "Reserved word at offset 14 is 1, expected 0"},
        {{{15, 1}}, "Reserved word at offset 14 is 256, expected 0"},
        {{{16, 3}}, "Frame height at offset 24 is 2, expected 3 as in the file header"},
        {{{18, 7}}, "Reserved word at offset 18 is 7, expected 0"},
        {{{20, 6}}, "Frame width at offset 20 is 6, expected 4 as in the file header"},
        {{{22, 0}}, "Frame flag word at offset 22 is 0, expected 1"},
        {{{23, 1}}, "Frame flag word at offset 22 is 257, expected 1"},
        {{{25, 1}}, "Frame height at offset 24 is 258, expected 2 as in the file header"},
        {{{27, 1}}, "Reserved word at offset 26 is 256, expected 0"},
        {{{12, 3}, {20, 3}},
         "Width at offset 12 is 3, expected a multiple of 2 for YCbCr_ITU_T871_U8_YUYV-422"},
        {{{8, 0}, {11, 0x20}}, // YCoCg-DXT5
         "Height at offset 16 is 2, expected a multiple of 4 for YCoCg_U8_YCoCg-DXT5"},
        {{{12, 0}, {20, 0}}, "Width at offset 12 is 0, expected 1 or more"},
        {{{16, 0}, {24, 0}}, "Height at offset 16 is 0, expected 1 or more"},
    };
    for (auto const& row : version1) {
        Bytes file = smallFile();
        for (auto const& [offset, value] : row.bytes)
            file.at(offset) = value;
        EXPECT_EQ(refusalOf(file), row.message);
    }

    Bytes file = smallFile(2);
    file[21] = 1;
    EXPECT_EQ(refusalOf(file), "Reserved word at offset 20 is 256, expected 0");
    file = smallFile(2);
    file[38] = 1;
    EXPECT_EQ(refusalOf(file), "Reserved word at offset 38 is 1, expected 0");
    file = smallFile(2);
    file[40] = 5;
    EXPECT_EQ(refusalOf(file), "Frame width at offset 40 is 5, expected 4 as in the file header");
}

TEST(MediaFileReader, TakesExactlyTheLengthOfThePicture) {
    std::string const need =
        ", expected 44 bytes for 4 x 2 pixels of YCbCr_ITU_T871_U8_YUYV-422 from offset 28";
    Bytes const whole = smallFile();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        std::string const bytes = std::to_string(length) + (length == 1 ? " byte" : " bytes");
        std::string const missing = std::to_string(44 - length) + (length == 43 ? " byte" : " bytes");
        EXPECT_EQ(refusalOf(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length))),
                  length < 28 ? "File of " + bytes + " is too short for its headers, expected 28 or more"
                              : "File of " + bytes + " is " + missing + " too short" + need);
    }
    Bytes longer = whole;
    longer.push_back(0);
    EXPECT_EQ(refusalOf(longer), "File of 45 bytes is 1 byte too long" + need);

    Bytes const version2 = smallFile(2);
    for (std::size_t length = 28; length < version2.size(); ++length)
        EXPECT_NE(refusalOf(Bytes(version2.begin(), version2.begin() + static_cast<std::ptrdiff_t>(length))),
                  "");
}

TEST(MediaFileReader, RecognisesSizesThatLostTheirHighBits) {
    struct {
        FrameFormat format;
        int width, height;
        std::size_t pixelBytes;
        const char* size; ///< what the length shows; null for a length that shows nothing
    } const cases[] = {
        {F::RGB_U8(), 70000 - 65536, 1, 210000, "70000 x 1 pixels of RGB_U8_RGB"},
        {F::RGB_U8(), 3, 2, 3 * 65538 * 3, "3 x 65538 pixels of RGB_U8_RGB"},
        {F::RGB_U8(), 0, 2, 2 * 65536 * 3, "65536 x 2 pixels of RGB_U8_RGB"},
        {P::RGB_DXT1_U8(), 8, 0, 65536 * 8 / 2, "8 x 65536 pixels of RGB_U8_RGB-DXT1"},
        {P::YCBCR_ITU_T871_9ZT_420_U8(), 2, 2, (3 * 65536 + 2) * 3,
         "196610 x 2 pixels of YCbCr_ITU_T871_U8_9ZT-420"},
        {F::RGB_U8(), 70000 - 65536, 1, 210001, nullptr},
        {F::RGB_U8(), 0, 2, 2 * 65536 * 3 + 3, nullptr},
        {F::RGB_U8(), 0, 0, 0, nullptr},
    };
    for (auto const& row : cases) {
        std::string const message = refusalOf(fileOf(row.format, static_cast<std::uint16_t>(row.width),
                                                     static_cast<std::uint16_t>(row.height), row.pixelBytes));
        std::string const hint = "; the file has the length of ";
        if (row.size)
            EXPECT_THAT(message,
                        testing::HasSubstr(hint + row.size + ", sizes that do not fit the headers' 16 bits"));
        else
            EXPECT_THAT(message, testing::AllOf(testing::Ne(""), testing::Not(testing::HasSubstr(hint))));
    }

    // The sizes above, as the writer leaves them.
    TemporaryFolder const folder;
    FileStreamFactory files;
    ZentrelMediaFileWriter(files).writeFrame(folder / "wide.zet", FullFrame::create(F::RGB_U8(), 1, 70000));
    EXPECT_EQ(
        refusalOf(files, folder / "wide.zet"),
        "File of 210028 bytes is 196608 bytes too long, expected 13420 bytes for 4464 x 1 pixels of "
        "RGB_U8_RGB from offset 28; the file has the length of 70000 x 1 pixels of RGB_U8_RGB, sizes that "
        "do not fit the headers' 16 bits");
}

TEST(MediaFileReader, AllocatesNothingForWhatIsNotThere) {
    EXPECT_EQ(refusalOf(fileOf(F::RGBA_U8(), 65535, 65535, 16)),
              "File of 44 bytes is 17179344884 bytes too short, expected 17179344928 bytes for 65535 x 65535 "
              "pixels of RGBA_U8_RGBA from offset 28");

    MemoryFile huge(fileOf(F::RGBA_U8(), 32768, 16384, 20));
    huge.length = 28 + (std::uint64_t{1} << 31);
    EXPECT_EQ(refusalOf(huge), "Pixels of 2147483648 bytes are too large, expected at most 2147483647");
    huge.length = std::uint64_t{1} << 62;
    EXPECT_THAT(refusalOf(huge), testing::HasSubstr("4611686016279904228 bytes too long"));
}

TEST(MediaFileReader, SurvivesEveryFlippedBitOfItsHeaders) {
    Bytes const whole = fileOf(F::RGB_U8(), 2, 2, 12);
    for (std::size_t bit = 0; bit < 8 * 28; ++bit) {
        Bytes file = whole;
        file[bit / 8] = static_cast<std::uint8_t>(file[bit / 8] ^ (1 << bit % 8));
        // Any minor version will do, and RGB differs from BGR in one bit.
        bool const harmless = bit / 8 == 7 || bit == 8 * 8 + 1;
        EXPECT_EQ(refusalOf(file).empty(), harmless) << "bit " << bit;
    }
}

// ---- Streams that fail ----

TEST(MediaFileReader, ReportsEveryFaultOfTheStream) {
    std::string const noLength = "Failed to find out the file's length";
    std::string const noSeek = "Failed to go to the file's beginning";
    std::string const failing[] = {"Failed to open file",
                                   noLength, // going to the end
                                   noLength, // asking where that is
                                   noSeek,
                                   "Failed to read file, got 0 of 44 bytes",
                                   noSeek, // once more, for the frame
                                   "Failed to read file, got 0 of 44 bytes"};
    auto const messageWith = [](Fault fault) {
        MemoryFile file(smallFile(), fault);
        return TestSupport::messageOf<MediaFileAccessException>(
            [&] { ZentrelMediaFileReader(file).readFrame("a.zet"); });
    };
    int const operations = static_cast<int>(std::size(failing));
    for (int operation = 0; operation < operations; ++operation) {
        EXPECT_EQ(messageWith({Fault::Fails, operation}), failing[operation]);
        EXPECT_THAT(messageWith({Fault::Throws, operation}), testing::HasSubstr("the cable is out"));
    }
    for (int const read : {4, 6})
        EXPECT_EQ(messageWith({Fault::ReadsLess, read}), "Failed to read file, got 22 of 44 bytes");
    MemoryFile untouched(smallFile(), {Fault::Throws, operations});
    EXPECT_EQ(refusalOf(untouched), "") << "there is an operation that was not tried";
}

TEST(MediaFileReader, RefusesWhatIsNoFile) {
    TemporaryFolder const folder;
    FileStreamFactory files;
    ASSERT_EQ(mkfifo((folder / "pipe.zet").c_str(), 0600), 0);
    std::ofstream(folder / "empty.zet").close();
    std::filesystem::create_symlink("pipe.zet", folder / "link.zet");
    std::string const special = "Expected a file, not a device, pipe or socket";
    EXPECT_EQ(refusalOf(files, folder / "missing.zet"), "Failed to open file");
    EXPECT_EQ(refusalOf(files, folder.path()), "Expected a file, not a folder");
    EXPECT_EQ(refusalOf(files, folder / "pipe.zet"), special); // and does not wait for a writer
    EXPECT_EQ(refusalOf(files, folder / "link.zet"), special);
    EXPECT_EQ(refusalOf(files, "/dev/zero"), special);
    EXPECT_EQ(refusalOf(files, "/dev/null"), special);
    EXPECT_EQ(refusalOf(files, folder / "empty.zet"),
              "File of 0 bytes is too short for its headers, expected 28 or more");
}

} // namespace
