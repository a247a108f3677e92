#include <MediaConversion/mediafile/HeaderStreamBuilders.h>

#include <tests/MediaConversion/converters/ConverterValidator.h>
#include <tests/MediaConversion/mediafile/MemoryFile.h>
#include <tests/MediaFile.h>

using namespace MediaConversion;
using namespace Zentrel;
using namespace TestSupport;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

/// What the writer makes of the frame, as a file.
Bytes written(std::unique_ptr<IFrame> frame) {
    MemoryFile file;
    ZentrelMediaFileWriter(file).writeFrame("some/where.zet", std::move(frame));
    return file.bytes;
}

TEST(HeaderStreamBuilders, LayTheirFieldsOut) {
    auto const contentOf = [](std::stringstream const& stream) {
        std::string const text = stream.str();
        return Bytes(text.begin(), text.end());
    };
    auto builder = ZentrelHeaderStreamBuilder()
                       .magicBytes({1, 2, 3, 4})
                       .frameCount(5)
                       .targetFrameCount(6)
                       .majorVersion(1)
                       .minorVersion(8)
                       .mediaFormat(0x0C0B0A09)
                       .width(0x0E0D)
                       .height(0x100F);
    Bytes expected{1, 2, 3, 4, 5, 6, 1, 8, 9, 10, 11, 12, 13, 14, 0, 0, 15, 16, 0, 0};
    EXPECT_EQ(contentOf(builder.build()), expected);
    expected[6] = 2;
    expected.resize(40, 0);
    EXPECT_EQ(contentOf(builder.majorVersion(2).build()), expected);

    EXPECT_EQ(contentOf(ZentrelHeaderStreamBuilder::modelYuv4kMediaHeader()),
              (Bytes{0x39, 0x7A, 0x74, 0x20, 1, 1, 1, 0, 8, 0, 0, 0, 0x00, 0x10, 0, 0, 0x70, 0x08, 0, 0}));
    EXPECT_EQ(contentOf(ZentrelFrameHeaderStreamBuilder().width(0x0201).flags(0x0403).height(0x0605).build()),
              (Bytes{1, 2, 3, 4, 5, 6, 0, 0}));
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

    for (auto const& [format, bits] : expected) {
        auto const byte = [bits = bits](int shift) { return static_cast<std::uint8_t>(bits >> shift); };
        Bytes file{'9', 'z', 't', ' ', 1, 1, 1, 0, byte(0), byte(8), byte(16), byte(24), 8, 0,
                   0,   0,   4,   0,   0, 0, 8, 0, 1,       0,       4,        0,        0, 0};
        GuardedPicture const picture(format, {8, 4}, Filling::Noise); // whose rows lie apart
        Bytes const pixels = pixelsOf(*frameOf(format, picture.matrix().clone()));
        file.insert(file.end(), pixels.begin(), pixels.end());
        EXPECT_EQ(written(picture.frame()), file) << FrameFormat::toString(format);
    }
}

TEST(MediaFileWriter, KeepsTheLowBitsOfLargeSizes) {
    Bytes const file = written(FullFrame::create(F::RGB_U8(), 1, 70000));
    EXPECT_EQ(file.size(), 28u + 210000u);
    for (std::size_t const offset : {12, 20})
        EXPECT_EQ(file[offset] | file[offset + 1] << 8, 70000 - 65536);
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

TEST(MediaFileWriter, RefusesWhatItCannotWrite) {
    std::uint8_t pixel[4] = {};
    cv::Mat const huge(8192, 65536, CV_8UC4, pixel); // a header alone: its 2^31 bytes are counted, not read
    std::pair<std::unique_ptr<IFrame>, const char*> cases[] = {
        {nullptr, "no frame data"},
        {std::make_unique<FullFrame>(F::RGB_U8()), "No image data to write"},
        {PackedFrame::create(P::RGB_DPX_PACKED_U12(), 2, 2),
         "Frame writing is not supported for format RGB_U12_RGB-DPX-PACKED"},
        {std::make_unique<FullFrame>(F::RGBA_U8(), huge, Frame::Origin::TopLeft),
         "Image data of 2147483648 bytes is too large, a media file holds at most 2147483647"},
    };
    for (auto& [frame, message] : cases)
        EXPECT_EQ(refusalOf("some/where.zet", [&, &frame = frame] { written(std::move(frame)); }), message);
}

TEST(MediaFileWriter, ReportsEveryFaultOfTheStream) {
    MemoryFile file;
    GuardedPicture const picture(F::RGB_U8(), {8, 4}, Filling::Noise);
    auto const write = [&] { ZentrelMediaFileWriter(file).writeFrame("some/where.zet", picture.frame()); };
    write();
    auto const whole = file.bytes;
    auto const operations = file.operations;
    ASSERT_EQ(whole.size(), 28u + 96u);
    ASSERT_EQ(operations.front(), "open");
    ASSERT_EQ(operations.back(), "close");

    for (int position = 0; position < static_cast<int>(operations.size()); ++position)
        for (auto const kind : {Fault::Fails, Fault::Throws, Fault::MovesLess, Fault::LosesUnseen}) {
            std::string const& operation = operations[static_cast<std::size_t>(position)];
            if (kind >= Fault::MovesLess && operation != "write")
                continue;
            SCOPED_TRACE(operation + ", number " + std::to_string(position));
            file.fault = {kind, position};
            EXPECT_THAT(refusalOf("some/where.zet", write),
                        testing::HasSubstr(kind == Fault::Throws ? "the cable is out"
                                           : operation == "open" ? "Failed to open file"
                                                                 : "Failed to write file"));
            file.fault = {};
            write(); // and nothing of the fault is left behind
            EXPECT_EQ(file.bytes, whole);
        }
}

} // namespace
