// Tables of conversions whose work the kernels do, row by row.
#pragma once

#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/ParallelRows.h>
#include <MediaConversion/converters/kernels/Kernels.h>

#include <tuple>

namespace MediaConversion {

inline Zentrel::PackedFrame convertRows(Zentrel::FullFrame const& source,
                                        Zentrel::FrameFormat const& destination, RowEncoder const& kernel) {
    Zentrel::PackedFrame packed(destination, source.rows(), source.cols());
    cv::Mat const from = source.image();
    cv::Mat to = packed.image();
    int const blockRows = static_cast<int>(destination.pixelPacking.pixels().rows);
    parallelRows(to.rows, [&](int row) {
        kernel.convertRow(from.ptr(row * blockRows), from.step[0], to.ptr(row), to.cols);
    });
    return packed;
}

inline Zentrel::FullFrame convertRows(Zentrel::PackedFrame const& source,
                                      Zentrel::FrameFormat const& destination, RowDecoder const& kernel) {
    Zentrel::FullFrame full(destination, source.rows(), source.cols());
    cv::Mat const from = source.image();
    cv::Mat to = full.image();
    int const blockRows = static_cast<int>(source.format().pixelPacking.pixels().rows);
    parallelRows(from.rows, [&](int row) {
        kernel.convertRow(from.ptr(row), to.ptr(row * blockRows), to.step[0], from.cols);
    });
    return full;
}

/// The conversions of one of the kernels' tables, with the kernels of the instruction set that is in use when
/// a frame arrives.
template <class ConversionTable, class Rows>
ConversionTable tableOfKernels(Rows Kernels::*kernels) {
    ConversionTable table;
    for (int i = 0; i < (plainKernels.*kernels).count; ++i) {
        auto const& row = (plainKernels.*kernels).rows[i];
        table.emplace(std::tuple(row.source(), row.destination()),
                      [kernels, i](auto const& source, Zentrel::FrameFormat const& destination) {
                          return convertRows(source, destination, (currentKernels().*kernels).rows[i]);
                      });
    }
    return table;
}

} // namespace MediaConversion
