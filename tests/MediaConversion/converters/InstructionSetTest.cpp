#include <MediaConversion/converters/InstructionSet.h>

#include <tests/TestSupport.h>

#include <algorithm>

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

} // namespace
