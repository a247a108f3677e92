// Loops over constants.
#pragma once

#include <type_traits>
#include <utility>

namespace MediaConversion {
namespace {

/// Calls `action(std::integral_constant<int, i>())` for every i below `count`: a loop whose numbers are
/// constants, so that the compilers keep in registers what they index.
template <class Action, int... i>
void unrolled(Action const& action, std::integer_sequence<int, i...>) {
    (action(std::integral_constant<int, i>()), ...);
}

template <int count, class Action>
void unrolled(Action const& action) {
    unrolled(action, std::make_integer_sequence<int, count>());
}

} // namespace
} // namespace MediaConversion
