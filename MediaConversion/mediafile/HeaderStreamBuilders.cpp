#include <MediaConversion/mediafile/HeaderStreamBuilders.h>

namespace MediaConversion {

namespace {

/// Appends the value's bytes, the least significant first.
template <class Unsigned>
void put(std::ostream& stream, Unsigned value) {
    for (unsigned shift = 0; shift < 8 * sizeof(value); shift += 8)
        stream.put(static_cast<char>((value >> shift) & 0xFF));
}

constexpr std::uint16_t reserved = 0;

} // namespace

using File = ZentrelHeaderStreamBuilder;
using Frame = ZentrelFrameHeaderStreamBuilder;

// clang-format off
File& File::magicBytes(MagicBytes const& value)  { m_magicBytes = value;       return *this; }
File& File::frameCount(std::uint8_t value)       { m_frameCount = value;       return *this; }
File& File::targetFrameCount(std::uint8_t value) { m_targetFrameCount = value; return *this; }
File& File::majorVersion(std::uint8_t value)     { m_majorVersion = value;     return *this; }
File& File::minorVersion(std::uint8_t value)     { m_minorVersion = value;     return *this; }
File& File::mediaFormat(std::uint32_t value)     { m_mediaFormat = value;      return *this; }
File& File::width(std::uint16_t value)           { m_width = value;            return *this; }
File& File::height(std::uint16_t value)          { m_height = value;           return *this; }

Frame& Frame::width(std::uint16_t value)         { m_width = value;            return *this; }
Frame& Frame::flags(std::uint16_t value)         { m_flags = value;            return *this; }
Frame& Frame::height(std::uint16_t value)        { m_height = value;           return *this; }
// clang-format on

std::stringstream File::build() const {
    std::stringstream stream;
    for (std::uint8_t const byte : m_magicBytes)
        put(stream, byte);
    put(stream, m_frameCount);
    put(stream, m_targetFrameCount);
    put(stream, m_majorVersion);
    put(stream, m_minorVersion);
    put(stream, m_mediaFormat);
    put(stream, m_width);
    put(stream, reserved);
    put(stream, m_height);
    put(stream, reserved);
    if (m_majorVersion >= 2)
        for (int i = 0; i < 10; ++i)
            put(stream, reserved);
    return stream;
}

std::stringstream File::modelYuv4kMediaHeader() {
    return File()
        .magicBytes(mediaFileMagic)
        .frameCount(1)
        .targetFrameCount(1)
        .majorVersion(1)
        .minorVersion(0)
        .mediaFormat(8)
        .height(2160)
        .width(4096)
        .build();
}

std::stringstream Frame::build() const {
    std::stringstream stream;
    put(stream, m_width);
    put(stream, m_flags);
    put(stream, m_height);
    put(stream, reserved);
    return stream;
}

} // namespace MediaConversion
