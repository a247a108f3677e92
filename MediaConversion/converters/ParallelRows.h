// Rows of a frame on OpenCV's workers.
#pragma once

#include <opencv2/core/utility.hpp>

#include <atomic>

namespace MediaConversion {

/// Calls `work(range)` for ranges that make up the rows 0..rows-1, several at a time, and returns when all
/// are done.
template <class Work>
void parallelRanges(int rows, Work const& work) {
    class Ranges final : public cv::ParallelLoopBody {
    public:
        explicit Ranges(Work const& work) : work(work) {}

        void operator()(cv::Range const& range) const override {
            order.load(std::memory_order_acquire);
            work(range);
            order.fetch_add(1, std::memory_order_release);
        }

        Work const& work;
        // OpenCV orders the workers' steps before and after the caller's. This says so once more, for the
        // thread sanitizer, which does not see into OpenCV.
        mutable std::atomic<int> order{0};
    };

    Ranges const body(work);
    body.order.store(0, std::memory_order_release);
    cv::parallel_for_(cv::Range(0, rows), body);
    body.order.load(std::memory_order_acquire);
}

/// Calls `kernel(row)` for every row of 0..rows-1, several at a time, and returns when all are done.
template <class Kernel>
void parallelRows(int rows, Kernel const& kernel) {
    parallelRanges(rows, [&](cv::Range const& range) {
        for (int row = range.start; row < range.end; ++row)
            kernel(row);
    });
}

} // namespace MediaConversion
