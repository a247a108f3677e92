// Vectors as both compilers know them: operators work lane by lane, comparisons set all bits of a lane.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace MediaConversion {
namespace {

template <class Number, int bytes>
struct VectorOfNumbers {
    typedef Number Type __attribute__((vector_size(bytes)));
};

template <class Number, int bytes>
using VectorOf = typename VectorOfNumbers<Number, bytes>::Type;

} // namespace
} // namespace MediaConversion
