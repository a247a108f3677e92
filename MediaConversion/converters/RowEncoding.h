// Tables of conversions whose work the kernels do, row by row.
#pragma once

#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/ParallelRows.h>
#include <MediaConversion/converters/kernels/Kernels.h>

#include <tuple>

namespace MediaConversion {

inline Zentrel::PackedFrame encodedRows(Zentrel::FullFrame const& source,
                                        Zentrel::FrameFormat const& destination, EncodeRow encodeRow) {
    Zentrel::PackedFrame packed(destination, source.rows(), source.cols());
    cv::Mat const from = source.image();
    cv::Mat to = packed.image();
    int const blockRows = static_cast<int>(destination.pixelPacking.pixels().rows);
    parallelRows(to.rows,
                 [&](int row) { encodeRow(from.ptr(row * blockRows), from.step[0], to.ptr(row), to.cols); });
    return packed;
}

/// The conversions of one of the kernels' tables, with the kernels of the instruction set that is in use when
/// a frame arrives.
template <class ConversionTable>
ConversionTable tableOfRowEncoders(RowEncoders Kernels::*encoders) {
    ConversionTable table;
    for (int i = 0; i < (plainKernels.*encoders).count; ++i) {
        RowEncoder const& row = (plainKernels.*encoders).rows[i];
        table.emplace(
            std::tuple(row.source(), row.destination()),
            [encoders, i](Zentrel::FullFrame const& source, Zentrel::FrameFormat const& destination) {
                return encodedRows(source, destination, (currentKernels().*encoders).rows[i].encodeRow);
            });
    }
    return table;
}

} // namespace MediaConversion
