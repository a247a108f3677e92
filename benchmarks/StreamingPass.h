// What all costs are compared with: a pass that only reads a picture and writes as many bytes as its
// conversion does.
#pragma once

#include <MediaConversion/converters/ParallelRows.h>

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace Benchmarks {

/// A BGRA picture of floats from 0 to 1, the same one every time.
inline cv::Mat noise(int rows, int columns) {
    cv::Mat picture(rows, columns, CV_32FC4);
    std::mt19937 random(1);
    std::uniform_real_distribution<float> sample(0, 1);
    std::generate_n(picture.ptr<float>(), picture.total() * picture.channels(),
                    [&] { return sample(random); });
    return picture;
}

#if defined(__x86_64__)
#define FOR_WIDEST_VECTORS __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define FOR_WIDEST_VECTORS
#endif

FOR_WIDEST_VECTORS inline std::uint64_t bitsOf(std::uint64_t const* samples, std::size_t count) {
    std::uint64_t bits[32] = {};
    for (std::size_t i = 0; i + 32 <= count; i += 32)
        for (std::size_t k = 0; k < 32; ++k)
            bits[k] |= samples[i + k];
    return std::accumulate(std::begin(bits), std::end(bits), std::uint64_t{0}, std::bit_or<>());
}

/// Reads all of `input` and writes all of `output`, on OpenCV's threads.
inline void stream(cv::Mat const& input, cv::Mat& output) {
    MediaConversion::parallelRows(input.rows, [&](int row) {
        auto const begin = [&](cv::Mat const& matrix, int rowsOn = 0) {
            return matrix.data + matrix.total() * matrix.elemSize() * (row + rowsOn) / input.rows;
        };
        auto const bits = bitsOf(reinterpret_cast<std::uint64_t const*>(begin(input)),
                                 (begin(input, 1) - begin(input)) / sizeof(std::uint64_t));
        std::memset(begin(output), static_cast<int>(bits & 1), begin(output, 1) - begin(output));
    });
}

template <class Action>
double secondsOf(Action const& action) {
    auto const start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The middle one, or the larger of the two in the middle.
inline double median(std::vector<double> numbers) {
    auto const middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

/// Times `action`, which makes an output of `output`'s bytes from the input, and the pass over the same bytes
/// by turns. The ratio is the median of the rounds': what else the machine does comes and goes, and what
/// follows one another meets the same. Two rounds before take what comes only once: making room for large
/// pages can stop the first one for half a second.
template <class Action>
void compareWithStream(benchmark::State& state, cv::Mat const& input, cv::Mat output, double pixels,
                       Action const& action) {
    for (int round = 0; round < 2; ++round) {
        action();
        stream(input, output);
    }
    double best = std::numeric_limits<double>::max(), bestStream = best;
    std::vector<double> ratios;
    for (auto _ : state) {
        double const seconds = secondsOf(action), streaming = secondsOf([&] { stream(input, output); });
        best = std::min(best, seconds);
        bestStream = std::min(bestStream, streaming);
        ratios.push_back(seconds / streaming);
        state.SetIterationTime(seconds);
    }
    state.counters["ratio"] = median(ratios);
    state.counters["stream_ms"] = bestStream * 1e3;
    state.counters["best_ms"] = best * 1e3;
    state.counters["MP/s"] = pixels / best / 1e6;
}

} // namespace Benchmarks
