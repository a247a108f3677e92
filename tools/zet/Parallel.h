// The same work on many things at once.
#pragma once

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <type_traits>
#include <vector>

namespace ZetTool {

/// Calls `work` with every number below `count`, from up to `jobs` threads at once, and with the number of
/// the thread, below `jobs`, if it takes that too. `work` must not throw.
template <class Work>
void forEachIndex(std::size_t count, unsigned jobs, const Work& work) {
    std::atomic<std::size_t> taken{0};
    const auto takeAll = [&]([[maybe_unused]] unsigned job) {
        for (std::size_t index; (index = taken++) < count;)
            if constexpr (std::is_invocable_v<Work, std::size_t, unsigned>)
                work(index, job);
            else
                work(index);
    };
    std::vector<std::thread> threads;
    try {
        for (unsigned job = 1; job < std::min<std::size_t>(jobs, count); ++job)
            threads.emplace_back(takeAll, job);
    } catch (const std::system_error&) {
        // The system gives no more threads: those that there are do the work.
    }
    takeAll(0);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace ZetTool
