#include <MediaConversion/converters/InstructionSet.h>

#include <MediaConversion/converters/kernels/Kernels.h>

#include <atomic>
#include <iterator>
#include <stdexcept>

namespace MediaConversion {

namespace {

struct Implementation {
    InstructionSet set;
    bool (*available)();
    Kernels const* kernels;
};

#if defined(__x86_64__)
bool hasAvx2() { return __builtin_cpu_supports("avx2"); }
bool hasAvx512() {
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512vbmi");
}
#endif

// The slowest first.
constexpr Implementation implementations[] = {
    {InstructionSet::Plain, [] { return true; }, &plainKernels},
#if defined(__x86_64__)
    {InstructionSet::Avx2, hasAvx2, &avx2Kernels},
    {InstructionSet::Avx512, hasAvx512, &avx512Kernels},
#endif
};

std::atomic<Implementation const*>& chosen() {
    static std::atomic<Implementation const*> implementation = [] {
        Implementation const* fastest = nullptr;
        for (auto const& candidate : implementations)
            if (candidate.available())
                fastest = &candidate;
        return fastest;
    }();
    return implementation;
}

} // namespace

std::string toString(InstructionSet set) {
    constexpr const char* names[] = {"plain", "AVX2", "AVX-512"};
    auto const number = static_cast<std::size_t>(set);
    return number < std::size(names) ? names[number]
                                     : "(Unknown InstructionSet " + std::to_string(number) + ")";
}

std::vector<InstructionSet> availableInstructionSets() {
    std::vector<InstructionSet> sets;
    for (auto const& candidate : implementations)
        if (candidate.available())
            sets.push_back(candidate.set);
    return sets;
}

InstructionSet instructionSet() { return chosen().load()->set; }

void useInstructionSet(InstructionSet set) {
    for (auto const& candidate : implementations)
        if (candidate.set == set && candidate.available()) {
            chosen() = &candidate;
            return;
        }
    throw std::runtime_error("This machine has no " + toString(set) + " instructions");
}

Kernels const& currentKernels() { return *chosen().load()->kernels; }

} // namespace MediaConversion
