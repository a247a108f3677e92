#include <MediaConversion/converters/InstructionSet.h>
#include <MediaConversion/converters/kernels/Kernels.h>

#include <tests/TestSupport.h>

#include <algorithm>
#include <random>

using namespace MediaConversion;

namespace {

constexpr std::size_t guardBytes = 128;

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
    for (auto const set : {InstructionSet::Avx2, InstructionSet::Avx512, InstructionSet(7)}) {
        if (std::find(available.begin(), available.end(), set) != available.end())
            continue;
        EXPECT_EQ(TestSupport::messageOf([&] { useInstructionSet(set); }),
                  "This machine has no " + toString(set) + " instructions");
    }
    EXPECT_EQ(instructionSet(), before);
}

std::vector<std::uint8_t> randomBytes(std::size_t count) {
    std::mt19937 random;
    std::vector<std::uint8_t> bytes(count);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

/// The bytes of the rows of pixels that a kernel makes of random blocks, and of what lies behind each row.
std::vector<std::uint8_t> decodedWithGuards(RowDecoder const& decoder, int count) {
    auto const packing = decoder.source().pixelPacking;
    auto const blocks = randomBytes(count * packing.bytes()); // what is read behind it, the sanitizers see
    std::size_t const rowBytes =
        count * packing.pixels().columns * decoder.destination().pixelPacking.bytes() + guardBytes;
    std::vector<std::uint8_t> pixels(packing.pixels().rows * rowBytes, 0xa5);
    decoder.convertRow(blocks.data(), pixels.data(), rowBytes, count);
    for (std::size_t end = rowBytes; end <= pixels.size(); end += rowBytes)
        EXPECT_EQ(std::count(pixels.begin() + (end - guardBytes), pixels.begin() + end, 0xa5),
                  std::ptrdiff_t{guardBytes});
    return pixels;
}

/// The blocks that a kernel makes of random pixels, and what lies behind them.
std::vector<std::uint8_t> encodedWithGuards(RowEncoder const& encoder, int count) {
    auto const packing = encoder.destination().pixelPacking;
    std::size_t const rowBytes = count * packing.pixels().columns * encoder.source().pixelPacking.bytes();
    auto const pixels = randomBytes(packing.pixels().rows * rowBytes);
    std::vector<std::uint8_t> blocks(count * packing.bytes() + guardBytes, 0xa5);
    encoder.convertRow(pixels.data(), rowBytes, blocks.data(), count);
    EXPECT_EQ(std::count(blocks.end() - guardBytes, blocks.end(), 0xa5), std::ptrdiff_t{guardBytes});
    return blocks;
}

/// `convert` on all rows of the tables, with numbers of blocks around those that vectors hold: the bytes are
/// those of the plain kernels.
template <class Rows, class Convert>
void expectSameBytes(std::initializer_list<Rows Kernels::*> tables, Convert const& convert) {
    auto const before = instructionSet();
    for (auto const set : availableInstructionSets())
        for (auto const table : tables)
            for (int i = 0; i < (plainKernels.*table).count; ++i)
                for (int const count : {0, 1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 130}) {
                    useInstructionSet(set);
                    ASSERT_EQ(convert((currentKernels().*table).rows[i], count),
                              convert((plainKernels.*table).rows[i], count))
                        << toString(set) << ", row " << i << ", " << count << " blocks";
                }
    useInstructionSet(before);
}

TEST(InstructionSet, ConvertsRowsOfAnyLengthToTheSameBytes) {
    expectSameBytes({&Kernels::packing, &Kernels::subsampling, &Kernels::compression}, encodedWithGuards);
    expectSameBytes({&Kernels::unpacking, &Kernels::upsampling, &Kernels::decompression}, decodedWithGuards);
}

} // namespace
