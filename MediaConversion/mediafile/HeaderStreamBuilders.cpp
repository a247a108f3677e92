#include <MediaConversion/mediafile/HeaderStreamBuilders.h>

namespace MediaConversion {

namespace {

/// Appends the value's bytes, the least significant first. To a string, which throws when memory runs out: a
/// stream would go on without the byte.
template <class Unsigned>
void put(std::string& bytes, Unsigned value) {
    for (unsigned shift = 0; shift < 8 * sizeof(value); shift += 8)
        bytes += static_cast<char>((value >> shift) & 0xFF);
}

std::stringstream streamOf(std::string const& bytes) {
    return std::stringstream(bytes, std::ios_base::in | std::ios_base::out | std::ios_base::ate);
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
    std::string bytes;
    for (std::uint8_t const byte : m_magicBytes)
        put(bytes, byte);
    put(bytes, m_frameCount);
    put(bytes, m_targetFrameCount);
    put(bytes, m_majorVersion);
    put(bytes, m_minorVersion);
    put(bytes, m_mediaFormat);
    put(bytes, m_width);
    put(bytes, reserved);
    put(bytes, m_height);
    put(bytes, reserved);
    if (m_majorVersion >= 2)
        for (int i = 0; i < 10; ++i)
            put(bytes, reserved);
    return streamOf(bytes);
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
    std::string bytes;
    put(bytes, m_width);
    put(bytes, m_flags);
    put(bytes, m_height);
    put(bytes, reserved);
    return streamOf(bytes);
}

} // namespace MediaConversion
