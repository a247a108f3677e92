// Rows of a frame on OpenCV's workers.
#pragma once

#include <opencv2/core/utility.hpp>

#include <atomic>

namespace MediaConversion {

/// Calls `kernel(row)` for every row of 0..rows-1, several at a time, and returns when all are done.
template <class Kernel>
void parallelRows(int rows, Kernel const& kernel) {
    class Rows final : public cv::ParallelLoopBody {
    public:
        explicit Rows(Kernel const& kernel) : kernel(kernel) {}

        void operator()(cv::Range const& range) const override {
            order.load(std::memory_order_acquire);
            for (int row = range.start; row < range.end; ++row)
                kernel(row);
            order.fetch_add(1, std::memory_order_release);
        }

        Kernel const& kernel;
        // OpenCV orders the workers' steps before and after the caller's. This says so once more, for the
        // thread sanitizer, which does not see into OpenCV.
        mutable std::atomic<int> order{0};
    };

    Rows const body(kernel);
    body.order.store(0, std::memory_order_release);
    cv::parallel_for_(cv::Range(0, rows), body);
    body.order.load(std::memory_order_acquire);
}

} // namespace MediaConversion
