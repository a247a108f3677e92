#include <MediaConversion/MediaPipeline/RawFrameData.h>

#include <stdexcept>
#include <string>

RawFrameData::RawFrameData(std::unique_ptr<MemoryAccess> rawData, Offset pixelDataOffset, End pixelDataEnd)
    : block(std::move(rawData)), offset(pixelDataOffset), end(pixelDataEnd) {
    if (!block)
        throw std::runtime_error("Null data");
    if (offset.value > block->dataSize())
        throw std::runtime_error("Pixel data offset (" + std::to_string(offset.value) +
                                 ") exceeds data size (" + std::to_string(block->dataSize()) + ")");
    if (end.value != 0 && end.value < offset.value)
        throw std::runtime_error("Pixel data end (" + std::to_string(end.value) +
                                 ") is before pixel data offset (" + std::to_string(offset.value) + ")");
    if (end.value > block->dataSize())
        throw std::runtime_error("Pixel data end (" + std::to_string(end.value) + ") exceeds data size (" +
                                 std::to_string(block->dataSize()) + ")");
}

std::uint64_t RawFrameData::pixelDataSize() const {
    return (end.value != 0 ? end.value : block->dataSize()) - offset.value;
}

RawFrameData RawFrameData::clone() const {
    return RawFrameData(std::make_unique<MemoryAccess>(*block), offset, end);
}
