// Which of the processor's instructions the conversions use. All sets give the same bytes.
#pragma once

#include <string>
#include <vector>

namespace MediaConversion {

/// Plain is what every machine has; Avx512 needs the foundation, BW, DQ, VL and VBMI.
enum class InstructionSet { Plain, Avx2, Avx512 };

/// "plain", "AVX2", "AVX-512".
std::string toString(InstructionSet set);

/// The sets that this machine has, the slowest first; Plain is always there.
std::vector<InstructionSet> availableInstructionSets();

/// The set that conversions use: the fastest, unless `useInstructionSet` chose another.
InstructionSet instructionSet();

/// Has all conversions from now on use a certain set. Throws std::runtime_error for one that the machine
/// lacks. Any thread may call it: each conversion asks once, when it begins.
void useInstructionSet(InstructionSet set);

} // namespace MediaConversion
