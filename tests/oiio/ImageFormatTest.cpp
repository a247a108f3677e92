// Media files as an image format, in the test's own process.
#include <MediaConversion/MediaPipeline/FullFrame.h>

#include <oiio/MediaFileInput.h>
#include <oiio/MediaFileOutput.h>
#include <pictures/FrameConversion.h>
#include <tests/MediaFile.h>
#include <tests/tools/ToolProcess.h>

#include <OpenImageIO/filesystem.h>

#include <tuple>

using namespace testing;
using namespace TestSupport;
using OIIO::ImageSpec;
using Zentrel::FrameFormat;
using Zentrel::FullFrame;
using Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;
using ZetImageIo::MediaFileInput;
using ZetImageIo::MediaFileOutput;

namespace {

const std::vector<float> colour{0.25f, 0.5f, 0.75f, 0.4f}; // R, G, B, A

class ImageFormatTest : public Test, public ToolFolder {
protected:
    std::string file(const std::string& name) const { return (folder / name).string(); }

    /// 8x4 pixels of the colour.
    std::string write(const FrameFormat& format) const {
        auto frame = FullFrame::create(FullFrameFormat::BGRA_F32(), 4, 8);
        frame->image().setTo(cv::Scalar(colour[2], colour[1], colour[0], colour[3]));
        std::unique_ptr<Zentrel::IFrame> converted = std::move(frame);
        if (format == P::RGB_DXT1_U8())
            converted = ZetTool::convertFrame(std::move(converted), FullFrameFormat::RGB_U8());
        writeMediaFile(file("a.zet"), ZetTool::convertFrame(std::move(converted), format));
        return file("a.zet");
    }
};

ImageSpec specFor(int width, int height, const std::string& format) {
    ImageSpec spec(width, height, 3, OIIO::TypeUInt8);
    spec.attribute("zet:format", format);
    return spec;
}

TEST_F(ImageFormatTest, ReadsEveryFormatThatFilesHold) {
    struct Case {
        FrameFormat format;
        OIIO::TypeDesc type;
        int channels, bits;
        std::string writtenAs;
    };
    using F = FullFrameFormat;
    const auto u8 = OIIO::TypeUInt8, u16 = OIIO::TypeUInt16, f32 = OIIO::TypeFloat;
    const std::vector<Case> cases{
        {F::RGB_U8(), u8, 3, 8, "rgb8"},
        {F::BGR_U8(), u8, 3, 8, "rgb8"},
        {F::RGBA_U8(), u8, 4, 8, "rgba8"},
        {F::BGRA_U8(), u8, 4, 8, "rgba8"},
        {P::YCBCR_ITU_T871_YUYV_422_U8(), u8, 3, 8, "422"},
        {P::YCBCR_ITU_T871_9ZT_422_U10(), u16, 3, 10, "422-10"},
        {P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(), f32, 4, 12, "4224"},
        {P::YCBCR_ITU_T871_9ZT_420_U8(), u8, 3, 8, "420"},
        {P::RGB_DPX_FILLED_U10(), u16, 3, 10, "rgb10"},
        {P::BGR_DPX_FILLED_U10(), u16, 3, 10, "rgb10"},
        {P::RGB_SMPTE_2110_U12(), u16, 3, 12, "rgb12"},
        {P::BGR_SMPTE_2110_U12(), u16, 3, 12, "rgb12"},
        {P::YCOCG_DXT5_U8(), u8, 3, 8, "dxt5"},
        {P::RGB_DXT1_U8(), u8, 3, 8, "dxt5"},
    };
    ASSERT_EQ(cases.size(), MediaConversion::ZentrelMediaFileWriter::mediaHeaderFormat.size());
    for (const auto& [format, type, channels, bits, writtenAs] : cases) {
        SCOPED_TRACE(FrameFormat::toString(format));
        MediaFileInput input;
        ImageSpec spec;
        ASSERT_TRUE(input.open(write(format), spec)) << input.geterror();
        EXPECT_TRUE(input.valid_file(file("a.zet")));
        EXPECT_EQ(std::tuple(spec.width, spec.height, spec.nchannels, spec.alpha_channel),
                  std::tuple(8, 4, channels, channels == 4 ? 3 : -1));
        EXPECT_EQ(spec.format, type);
        EXPECT_EQ(spec.get_int_attribute("oiio:BitsPerSample"), bits);
        EXPECT_EQ(spec.get_string_attribute("zet:format"), writtenAs);
        EXPECT_EQ(spec.get_string_attribute("zet:pixelFormat"), FrameFormat::toString(format));
        std::vector<float> samples(std::size_t(8 * 4 * channels));
        ASSERT_TRUE(input.read_image(0, 0, 0, -1, OIIO::TypeFloat, samples.data())) << input.geterror();
        const float tolerance = format == P::RGB_DXT1_U8()     ? 0.04f
                                : format == P::YCOCG_DXT5_U8() ? 0.02f
                                                               : 0.006f;
        for (std::size_t i = 0; i < samples.size(); ++i)
            ASSERT_NEAR(samples[i], colour[i % std::size_t(channels)], tolerance) << i;
    }
}

TEST_F(ImageFormatTest, TakesTheColourSpaceFromTheHints) {
    ImageSpec hints, spec;
    MediaFileInput input;
    ASSERT_TRUE(input.open(write(FullFrameFormat::RGB_U8()), spec));
    EXPECT_EQ(spec.get_string_attribute("oiio:ColorSpace"), "sRGB");
    hints.attribute("oiio:ColorSpace", "Rec709");
    ASSERT_TRUE(input.open(file("a.zet"), spec, hints));
    EXPECT_EQ(spec.get_string_attribute("oiio:ColorSpace"), "Rec709");
}

TEST_F(ImageFormatTest, ReadsAndWritesBehindProxies) {
    const std::vector<std::uint8_t> pixels(8 * 4 * 3, 77);
    std::vector<unsigned char> inMemory;
    OIIO::Filesystem::IOVecOutput proxy(inMemory);
    MediaFileOutput output;
    for (const bool toMemory : {false, true}) {
        ASSERT_TRUE(!toMemory || output.set_ioproxy(&proxy));
        ASSERT_TRUE(output.open(file("b.zet"), specFor(8, 4, "rgb10"), MediaFileOutput::Create) &&
                    output.write_image(OIIO::TypeUInt8, pixels.data()) && output.close())
            << output.geterror();
    }
    EXPECT_EQ(inMemory, bytesOf(folder / "b.zet"));

    OIIO::Filesystem::IOMemReader reader(inMemory.data(), inMemory.size());
    MediaFileInput input;
    ImageSpec spec;
    std::vector<std::uint8_t> again(pixels.size());
    ASSERT_TRUE(input.set_ioproxy(&reader) && input.open("nowhere.zet", spec)) << input.geterror();
    ASSERT_TRUE(input.read_image(0, 0, 0, -1, OIIO::TypeUInt8, again.data())) << input.geterror();
    EXPECT_EQ(again, pixels);

    OIIO::Filesystem::IOMemReader cut(inMemory.data(), inMemory.size() - 5);
    ASSERT_TRUE(input.close() && input.set_ioproxy(&cut));
    EXPECT_FALSE(input.open("nowhere.zet", spec));
    EXPECT_THAT(input.geterror(), HasSubstr("5 bytes too short"));
}

TEST_F(ImageFormatTest, ShowsWholeFilesOnly) {
    const std::vector<std::uint8_t> row(8 * 3);
    MediaFileOutput output;
    const auto begin = [&] {
        return output.open(file("b.zet"), specFor(8, 4, "rgb8"), MediaFileOutput::Create);
    };
    ASSERT_TRUE(begin() && output.write_scanline(0, 0, OIIO::TypeUInt8, row.data(), OIIO::AutoStride));
    EXPECT_FALSE(output.write_scanline(2, 0, OIIO::TypeUInt8, row.data(), OIIO::AutoStride));
    EXPECT_EQ(output.geterror(), "row 2 came, expected row 1");
    EXPECT_FALSE(output.close());
    EXPECT_THAT(output.geterror(), HasSubstr("1 of 4 rows"));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));

    ASSERT_TRUE(begin());
    for (int y = 0; y < 4; ++y)
        ASSERT_TRUE(output.write_scanline(y, 0, OIIO::TypeUInt8, row.data(), OIIO::AutoStride));
    EXPECT_FALSE(output.write_scanline(4, 0, OIIO::TypeUInt8, row.data(), OIIO::AutoStride));
    EXPECT_EQ(output.geterror(), "row 4 came after the last one");
    MediaFileInput input;
    ImageSpec before;
    ASSERT_TRUE(output.close() && input.open(file("b.zet"), before));
    ASSERT_TRUE(output.open(file("b.zet"), specFor(4, 2, "rgb8"), MediaFileOutput::Create) &&
                output.write_image(OIIO::TypeUInt8, row.data()) && output.close());
    std::vector<std::uint8_t> all(row.size() * 4);
    EXPECT_FALSE(input.read_image(0, 0, 0, -1, OIIO::TypeUInt8, all.data()));
    EXPECT_THAT(input.geterror(), HasSubstr("b.zet: was replaced by another picture"));

    for (const auto& [spec, words] :
         std::vector<std::pair<ImageSpec, std::string>>{{specFor(7, 4, "422"), "6x4 or 8x4 would do"},
                                                        {specFor(8, 4, "9"), "unknown format \"9\""},
                                                        {specFor(0, 4, "rgb8"), "0x4"},
                                                        {specFor(70000, 2, "rgb8"), "65535"}}) {
        EXPECT_FALSE(output.open(file("b.zet"), spec, MediaFileOutput::Create));
        EXPECT_THAT(output.geterror(), HasSubstr(words));
    }
    EXPECT_FALSE(output.open(file("b.zet"), specFor(8, 4, "rgb8"), MediaFileOutput::AppendSubimage));
    EXPECT_FALSE(output.open(file("none/b.zet"), specFor(8, 4, "rgb8"), MediaFileOutput::Create));
    EXPECT_THAT(output.geterror(), HasSubstr("none\" does not exist"));
}

TEST_F(ImageFormatTest, ServesTheToolAsASource) {
    const auto source = write(FullFrameFormat::BGRA_U8());
    EXPECT_EQ(zet("write a.zet -o b.zet -f rgba8 -q").errors, "");
    EXPECT_THAT(bytesOf(folder / "b.zet").at(28), AllOf(Ge(63), Le(65)));
    std::filesystem::resize_file(source, 50);
    const auto failed = zet("write a.zet -o b.zet -q");
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_THAT(failed.errors, HasSubstr("a.zet: File of 50 bytes is 106 bytes too short"));
}

} // namespace
