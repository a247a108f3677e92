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

/// Of the numbers of `a` and, counted on, those of `b` the ones at these places.
template <int... place, class Vector>
Vector shuffled(Vector a, Vector b) {
#if defined(__clang__) || __GNUC__ >= 12
    return __builtin_shufflevector(a, b, place...);
#else
    using Places = decltype(a == b);
    return __builtin_shuffle(a, b, Places{place...});
#endif
}

} // namespace
} // namespace MediaConversion
