#if defined(__x86_64__)

#include <MediaConversion/converters/kernels/Foreword.h>

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi"))),       \
                             apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi")
#endif

#include <MediaConversion/converters/kernels/InstructionsAvx512.h>

#include <MediaConversion/converters/kernels/AllKernels.h>

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

MediaConversion::Kernels const MediaConversion::avx512Kernels = MediaConversion::allKernels;

#endif
