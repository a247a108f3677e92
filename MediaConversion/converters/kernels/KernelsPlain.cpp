#include <MediaConversion/converters/kernels/Foreword.h>

#include <MediaConversion/converters/kernels/InstructionsPlain.h>

#include <MediaConversion/converters/kernels/AllKernels.h>

MediaConversion::Kernels const MediaConversion::plainKernels = MediaConversion::allKernels;
