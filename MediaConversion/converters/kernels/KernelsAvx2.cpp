#if defined(__x86_64__)

#include <MediaConversion/converters/kernels/Foreword.h>

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

#include <MediaConversion/converters/kernels/InstructionsAvx2.h>

#include <MediaConversion/converters/kernels/AllKernels.h>

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

MediaConversion::Kernels const MediaConversion::avx2Kernels = MediaConversion::allKernels;

#endif
