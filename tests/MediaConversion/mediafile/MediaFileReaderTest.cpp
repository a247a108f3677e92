#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>

#include <tests/Conversion.h>
#include <tests/MediaConversion/converters/ConverterValidator.h>
#include <tests/MediaConversion/mediafile/MemoryFile.h>
#include <tests/MediaFile.h>

#include <sys/stat.h>

using namespace MediaConversion;
using namespace Zentrel;
using namespace testing;
using namespace TestSupport;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

/// A file whose pixel bytes count up from 1.
Bytes fileOf(FrameFormat const& format, std::uint16_t width, std::uint16_t height, std::size_t pixelBytes,
             std::uint8_t majorVersion = 1) {
    std::string const headers = ZentrelMediaFileWriter::headers(format, width, height);
    Bytes file(headers.begin(), headers.end());
    file[6] = majorVersion;
    if (majorVersion >= 2) // has reserved words between the file's header and the frame's
        file.insert(file.begin() + 20, 20, 0);
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
    ZentrelMediaFileReader reader(files);
    std::string const message = TestSupport::refusalOf(path, [&] { reader.readFrame(path); });
    EXPECT_EQ(TestSupport::refusalOf(path, [&] { reader.readInfo(path); }), message);
    return message;
}

std::string refusalOf(Bytes const& bytes) {
    MemoryFile file(bytes);
    return refusalOf(file);
}

// ---- Files that are right ----

TEST(MediaFileReader, ReadsBackWhatTheWriterWrites) {
    TemporaryFolder const folder;
    FileStreamFactory files;
    auto const path = folder / "frame.zet";
    for (auto const& [format, bits] : ZentrelMediaFileWriter::mediaHeaderFormat) {
        SCOPED_TRACE(FrameFormat::toString(format));
        GuardedPicture const picture(format, {8, 4}, Filling::Noise);
        auto const aligned = [&, &format = format] { return frameOf(format, picture.matrix().clone()); };
        Bytes const pixels = pixelsOf(*aligned());
        writeMediaFile(path, picture.frame());

        ZentrelMediaFileInfo const info = ZentrelMediaFileReader(files).readInfo(path);
        EXPECT_EQ(info.format, format);
        EXPECT_EQ(info.mediaFormat, bits);
        EXPECT_EQ(info.width, 8);
        EXPECT_EQ(info.height, 4);
        EXPECT_EQ(info.fileBytes, 28 + pixels.size());

        auto result = ZentrelMediaFileReader(files).readFrame(path);
        EXPECT_EQ(result->format(), format);
        EXPECT_EQ(result->rows(), 4);
        EXPECT_EQ(result->cols(), 8);
        EXPECT_EQ(pixelsOf(*result), pixels);
        EXPECT_EQ(pixelsOf(*result->clone()), pixels);
        // The pixels lie in the file that was read, where elements of four and eight bytes are at odd places.
        EXPECT_EQ(result->image().data, result->rawFrameData().rawData().data() + 28);
        if (Encoder::encodingSteps.count({format, F::BGRA_F32()})) {
            EXPECT_EQ(pixelsOf(*encoded(std::move(result), F::BGRA_F32())),
                      pixelsOf(*encoded(aligned(), F::BGRA_F32())));
        }
    }
}

TEST(MediaFileReader, KnowsWhereThePixelsOfEachVersionBegin) {
    for (std::uint8_t const majorVersion : {1, 2, 255}) {
        MemoryFile file(smallFile(majorVersion));
        file.bytes[7] = 9;
        ZentrelMediaFileInfo const info = ZentrelMediaFileReader(file).readInfo("a.zet");
        EXPECT_EQ(info.pixelOffset, majorVersion < 2 ? 28u : 48u);
        EXPECT_EQ(info.majorVersion, majorVersion);
        EXPECT_EQ(info.minorVersion, 9);
        EXPECT_EQ(pixelsOf(*ZentrelMediaFileReader(file).readFrame("a.zet")),
                  (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}));
    }
}

// ---- Files that are not ----

TEST(MediaFileReader, NamesTheFieldThatIsWrong) {
    struct {
        std::uint8_t majorVersion;
        std::vector<std::pair<std::size_t, std::uint8_t>> bytes;
        const char* message;
    } const cases[] = {
        {1, {{3, 0}}, "Magic at offset 0 is 39 7A 74 00, expected 39 7A 74 20, \"9zt \""},
        {1, {{4, 0}}, "Frame count at offset 4 is 0, expected 1"},
        {1, {{5, 2}}, "Target frame count at offset 5 is 2, expected 1"},
        {1, {{6, 0}}, "Major version at offset 6 is 0, expected 1 or more"},
        {1, {{6, 2}}, "File of 44 bytes is too short for its headers, expected 48 or more"},
        {1,
         {{8, 0x09}, {11, 0xA0}},
         "Media format at offset 8 is 0xA0000009, expected one of 0x00000202 0x00000200 0x000083F0 "
         "0x00001202 "
         "0x00001200 0x00010202 0x00010200 0x00000206 0x00000204 0x00000008 0x00000040 0x00001108 0x0001100C "
         "0x20000000"},
        {1, {{13, 1}}, "Frame width at offset 20 is 4, expected 260 as in the file header"},
        {1, {{16, 3}}, "Frame height at offset 24 is 2, expected 3 as in the file header"},
        {1, {{23, 1}}, "Frame flag word at offset 22 is 257, expected 1"},
        {1,
         {{12, 3}, {20, 3}},
         "Width at offset 12 is 3, expected a multiple of 2 for YCbCr_ITU_T871_U8_YUYV-422"},
        {1, // YCoCg-DXT5
         {{8, 0}, {11, 0x20}},
         "Height at offset 16 is 2, expected a multiple of 4 for YCoCg_U8_YCoCg-DXT5"},
        {1, {{12, 0}, {20, 0}}, "Width at offset 12 is 0, expected 1 or more"},
        {2, {{21, 1}}, "Reserved word at offset 20 is 256, expected 0"},
        {2, {{40, 5}}, "Frame width at offset 40 is 5, expected 4 as in the file header"},
    };
    for (auto const& row : cases) {
        Bytes file = smallFile(row.majorVersion);
        for (auto const& [offset, value] : row.bytes)
            file.at(offset) = value;
        EXPECT_EQ(refusalOf(file), row.message);
    }
}

TEST(MediaFileReader, TakesExactlyTheLengthOfThePicture) {
    std::string const need =
        ", expected 44 bytes for 4 x 2 pixels of YCbCr_ITU_T871_U8_YUYV-422 from offset 28";
    Bytes const whole = smallFile(), version2 = smallFile(2);
    auto const bytes = [](std::size_t count) {
        return std::to_string(count) + (count == 1 ? " byte" : " bytes");
    };
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(refusalOf(Bytes(whole.data(), whole.data() + length)),
                  "File of " + bytes(length) +
                      (length < 28 ? " is too short for its headers, expected 28 or more"
                                   : " is " + bytes(44 - length) + " too short" + need));
    Bytes longer = whole;
    longer.push_back(0);
    EXPECT_EQ(refusalOf(longer), "File of 45 bytes is 1 byte too long" + need);
    for (std::size_t length = 0; length < version2.size(); ++length)
        EXPECT_NE(refusalOf(Bytes(version2.data(), version2.data() + length)), "");
}

TEST(MediaFileReader, RecognisesSizesThatLostTheirHighBits) {
    struct {
        FrameFormat format;
        std::uint16_t width, height;
        std::size_t pixelBytes;
        const char* size; ///< what the length shows
    } const cases[] = {
        {F::RGB_U8(), 70000 - 65536, 1, 210000, "70000 x 1 pixels of RGB_U8_RGB"},
        {F::RGB_U8(), 0, 2, 2 * 65536 * 3, "65536 x 2 pixels of RGB_U8_RGB"},
        {P::RGB_DXT1_U8(), 8, 0, 65536 * 8 / 2, "8 x 65536 pixels of RGB_U8_RGB-DXT1"},
        {P::YCBCR_ITU_T871_9ZT_420_U8(), 2, 2, (3 * 65536 + 2) * 3,
         "196610 x 2 pixels of YCbCr_ITU_T871_U8_9ZT-420"},
    };
    std::string const hint = "; the file has the length of ";
    for (auto const& row : cases) {
        EXPECT_THAT(refusalOf(fileOf(row.format, row.width, row.height, row.pixelBytes)),
                    EndsWith(hint + row.size + ", sizes that do not fit the headers' 16 bits"));
        EXPECT_THAT(refusalOf(fileOf(row.format, row.width, row.height, row.pixelBytes + 1)),
                    AllOf(Ne(""), Not(HasSubstr(hint))));
    }
}

TEST(MediaFileReader, AllocatesNothingForWhatIsNotThere) {
    EXPECT_EQ(refusalOf(fileOf(F::RGBA_U8(), 65535, 65535, 16)),
              "File of 44 bytes is 17179344884 bytes too short, expected 17179344928 bytes for 65535 x 65535 "
              "pixels of RGBA_U8_RGBA from offset 28");

    TemporaryFolder const folder;
    FileStreamFactory files;
    auto const path = folder / "huge.zet";
    Bytes const start = fileOf(F::RGBA_U8(), 32768, 16384, 0);
    std::ofstream(path).write(reinterpret_cast<char const*>(start.data()), 28);
    std::filesystem::resize_file(path, 28 + (std::uint64_t{1} << 31)); // which takes up no space
    EXPECT_EQ(refusalOf(files, path),
              "Pixels of 2147483648 bytes are too large, expected at most 2147483647");
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
        return messageOf<MediaFileAccessException>([&] { ZentrelMediaFileReader(file).readFrame("a.zet"); });
    };
    int const operations = static_cast<int>(std::size(failing));
    for (int operation = 0; operation < operations; ++operation) {
        EXPECT_EQ(messageWith({Fault::Fails, operation}), failing[operation]);
        EXPECT_THAT(messageWith({Fault::Throws, operation}), HasSubstr("the cable is out"));
    }
    for (int const read : {4, 6})
        EXPECT_EQ(messageWith({Fault::MovesLess, read}), "Failed to read file, got 22 of 44 bytes");
    MemoryFile untouched(smallFile(), {Fault::Throws, operations});
    EXPECT_EQ(refusalOf(untouched), "") << "there is an operation that was not tried";
}

TEST(MediaFileReader, RefusesWhatIsNoFile) {
    TemporaryFolder const folder;
    FileStreamFactory files;
    ASSERT_EQ(mkfifo((folder / "pipe.zet").c_str(), 0600), 0);
    std::filesystem::create_symlink("pipe.zet", folder / "link.zet");
    std::string const special = "Expected a file, not a device, pipe or socket";
    EXPECT_EQ(refusalOf(files, folder / "missing.zet"), "Failed to open file");
    EXPECT_EQ(refusalOf(files, folder.path()), "Expected a file, not a folder");
    EXPECT_EQ(refusalOf(files, folder / "link.zet"), special); // and does not wait for a writer
    EXPECT_EQ(refusalOf(files, "/dev/zero"), special);
}

} // namespace
