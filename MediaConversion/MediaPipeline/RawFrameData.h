// A block of memory with pixels somewhere in it, such as a file that was read whole.
#pragma once

#include <MediaConversion/MediaPipeline/MemoryPool.h>

#include <cstdint>
#include <memory>

/// Owns a block of memory and knows where the pixels lie in it.
class RawFrameData {
public:
    struct Offset {
        std::uint64_t value;
    };
    /// One past the last byte of the pixels; 0 stands for the end of the block.
    struct End {
        std::uint64_t value;
    };

    /// Throws std::runtime_error for a null block, an offset or end outside of it and an end before the
    /// offset.
    explicit RawFrameData(std::unique_ptr<MemoryAccess> rawData, Offset pixelDataOffset = {},
                          End pixelDataEnd = {});

    MemoryAccess& rawData() const { return *block; }
    Offset pixelDataOffset() const { return offset; }
    End pixelDataEnd() const { return end; }

    /// The first byte of the pixels.
    std::uint8_t* pixelData() const { return block->data() + offset.value; }
    /// Bytes of pixels.
    std::uint64_t pixelDataSize() const;

    /// A copy with a block of its own from the same pool.
    RawFrameData clone() const;

private:
    std::unique_ptr<MemoryAccess> block;
    Offset offset;
    End end;
};
