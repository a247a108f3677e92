// What the units of the kernels include before the region of their instruction set: all that must not be
// compiled with its instructions, because other units share it.
#pragma once

#include <MediaConversion/MediaPipeline/FrameFormat.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <type_traits>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif
