// What a fuzzer expects.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// Ends the program when it is not so, upon which the fuzzer keeps the input.
inline void require(bool condition, std::string const& expectation) {
    if (condition)
        return;
    std::fprintf(stderr, "not so: %s\n", expectation.c_str());
    std::abort();
}
