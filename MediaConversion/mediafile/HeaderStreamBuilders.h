// The headers of a media file, as bytes. All integers are little-endian.
//
//   offset  bytes  file header                     offset  bytes  frame header
//        0      4  magic, "9zt "                        0      2  width
//        4      1  frame count                          2      2  flags
//        5      1  target frame count                   4      2  height
//        6      1  major version                        6      2  0
//        7      1  minor version
//        8      4  media format                  The frame header follows the file header; the pixels follow
//       12      2  width in pixels               the frame header.
//       14      2  0
//       16      2  height in pixels
//       18      2  0
//       20     20  0, from major version 2 on
#pragma once

#include <array>
#include <cstdint>
#include <sstream>

namespace MediaConversion {

class ZentrelHeaderStreamBuilder {
public:
    using MagicBytes = std::array<std::uint8_t, 4>;

    /// What every media file begins with: "9zt ".
    static constexpr MagicBytes mediaFileMagic{0x39, 0x7A, 0x74, 0x20};

    ZentrelHeaderStreamBuilder& magicBytes(MagicBytes const& value);
    ZentrelHeaderStreamBuilder& frameCount(std::uint8_t value);
    ZentrelHeaderStreamBuilder& targetFrameCount(std::uint8_t value);
    ZentrelHeaderStreamBuilder& majorVersion(std::uint8_t value);
    ZentrelHeaderStreamBuilder& minorVersion(std::uint8_t value);
    ZentrelHeaderStreamBuilder& mediaFormat(std::uint32_t value);
    ZentrelHeaderStreamBuilder& width(std::uint16_t value);
    ZentrelHeaderStreamBuilder& height(std::uint16_t value);

    /// 20 bytes; 40 from major version 2 on.
    std::stringstream build() const;

    /// The header of one 4096 x 2160 frame of 8-bit YCbCr 4:2:2.
    static std::stringstream modelYuv4kMediaHeader();

private:
    MagicBytes m_magicBytes{};
    std::uint8_t m_frameCount = 0;
    std::uint8_t m_targetFrameCount = 0;
    std::uint8_t m_majorVersion = 0;
    std::uint8_t m_minorVersion = 0;
    std::uint32_t m_mediaFormat = 0;
    std::uint16_t m_width = 0;
    std::uint16_t m_height = 0;
};

class ZentrelFrameHeaderStreamBuilder {
public:
    ZentrelFrameHeaderStreamBuilder& width(std::uint16_t value);
    ZentrelFrameHeaderStreamBuilder& flags(std::uint16_t value);
    ZentrelFrameHeaderStreamBuilder& height(std::uint16_t value);

    /// 8 bytes.
    std::stringstream build() const;

private:
    std::uint16_t m_width = 0;
    std::uint16_t m_flags = 1;
    std::uint16_t m_height = 0;
};

} // namespace MediaConversion
