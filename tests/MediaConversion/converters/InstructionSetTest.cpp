#include <MediaConversion/converters/InstructionSet.h>
#include <MediaConversion/converters/kernels/Kernels.h>

#include <tests/TestSupport.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace MediaConversion;

namespace {

TEST(InstructionSet, IsTheFastestUntilAnotherIsChosen) {
    auto const available = availableInstructionSets();
    ASSERT_EQ(available.front(), InstructionSet::Plain);
    EXPECT_EQ(instructionSet(), available.back());
    for (auto const set : available) {
        useInstructionSet(set);
        EXPECT_EQ(instructionSet(), set);
    }
}

TEST(InstructionSet, MustBeOneOfTheMachine) {
    auto const before = instructionSet();
    auto const available = availableInstructionSets();
    for (auto const set : {InstructionSet::Avx2, InstructionSet::Avx512}) {
        if (std::find(available.begin(), available.end(), set) != available.end())
            continue;
        EXPECT_EQ(TestSupport::messageOf([&] { useInstructionSet(set); }),
                  "This machine has no " + toString(set) + " instructions");
    }
    EXPECT_EQ(instructionSet(), before);
}

/// The bytes of the rows of pixels that a kernel makes of random blocks, and of what lies behind each row.
std::vector<std::uint8_t> decodedWithGuards(RowDecoder const& decoder, int count) {
    auto const packing = decoder.source().pixelPacking;
    std::mt19937 random;
    std::vector<std::uint8_t> blocks(count * packing.bytes()); // what is read behind it, the sanitizers see
    std::generate(blocks.begin(), blocks.end(), [&] { return static_cast<std::uint8_t>(random()); });
    constexpr std::size_t guardBytes = 128;
    std::size_t const rowBytes =
        count * packing.pixels().columns * decoder.destination().pixelPacking.bytes() + guardBytes;
    std::vector<std::uint8_t> pixels(packing.pixels().rows * rowBytes, 0xa5);
    decoder.decodeRow(blocks.data(), pixels.data(), rowBytes, count);
    for (std::size_t end = rowBytes; end <= pixels.size(); end += rowBytes)
        EXPECT_EQ(std::count(pixels.begin() + (end - guardBytes), pixels.begin() + end, 0xa5),
                  std::ptrdiff_t{guardBytes});
    return pixels;
}

TEST(InstructionSet, DecodesRowsOfAnyLengthToTheSameBytes) {
    auto const before = instructionSet();
    for (auto const set : availableInstructionSets())
        for (auto const table : {&Kernels::unpacking, &Kernels::upsampling, &Kernels::decompression})
            for (int i = 0; i < (plainKernels.*table).count; ++i)
                for (int const count : {0, 1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 130}) {
                    useInstructionSet(set);
                    ASSERT_EQ(decodedWithGuards((currentKernels().*table).rows[i], count),
                              decodedWithGuards((plainKernels.*table).rows[i], count))
                        << toString(set) << ", row " << i << ", " << count << " blocks";
                }
    useInstructionSet(before);
}

} // namespace
