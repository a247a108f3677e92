// Tables of conversions from blocks whose work the kernels do, row by row.
#pragma once

#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/ParallelRows.h>
#include <MediaConversion/converters/kernels/Kernels.h>

#include <tuple>

namespace MediaConversion {

inline Zentrel::FullFrame decodedRows(Zentrel::PackedFrame const& source,
                                      Zentrel::FrameFormat const& destination, DecodeRow decodeRow) {
    Zentrel::FullFrame full(destination, source.rows(), source.cols());
    cv::Mat const from = source.image();
    cv::Mat to = full.image();
    int const blockRows = static_cast<int>(source.format().pixelPacking.pixels().rows);
    parallelRows(from.rows,
                 [&](int row) { decodeRow(from.ptr(row), to.ptr(row * blockRows), to.step[0], from.cols); });
    return full;
}

/// The conversions of one of the kernels' tables, with the kernels of the instruction set that is in use when
/// a frame arrives.
template <class ConversionTable>
ConversionTable tableOfRowDecoders(RowDecoders Kernels::*decoders) {
    ConversionTable table;
    for (int i = 0; i < (plainKernels.*decoders).count; ++i) {
        RowDecoder const& row = (plainKernels.*decoders).rows[i];
        table.emplace(
            std::tuple(row.source(), row.destination()),
            [decoders, i](Zentrel::PackedFrame const& source, Zentrel::FrameFormat const& destination) {
                return decodedRows(source, destination, (currentKernels().*decoders).rows[i].decodeRow);
            });
    }
    return table;
}

} // namespace MediaConversion
