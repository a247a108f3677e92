// Takes the memory of OpenCV matrices from a pool.
#pragma once

#include <MediaConversion/MediaPipeline/MemoryPool.h>

#include <opencv2/core/mat.hpp>

#include <map>
#include <memory>
#include <mutex>

namespace Zentrel {

#if CV_VERSION_MAJOR >= 4
using OpenCvAccessFlag = cv::AccessFlag;
#else
using OpenCvAccessFlag = int;
#endif

/// OpenCV matrices refer to their allocator by a plain pointer. One that is owned by a shared pointer
/// therefore stays alive, and its pool with it, until the last matrix that it made is gone. Thread-safe.
class OpenCvMatAllocator final : public cv::MatAllocator,
                                 public std::enable_shared_from_this<OpenCvMatAllocator> {
public:
    explicit OpenCvMatAllocator(std::shared_ptr<IMemoryPool> pool);
    ~OpenCvMatAllocator() override;

    /// The start of a buffer of at least `size` bytes; null when the pool has none to give.
    std::uint8_t* acquire(std::uint64_t size) const;
    /// Gives back a buffer; throws std::out_of_range for one that did not come from `acquire`.
    void release(std::uint8_t* buffer) const;

    /// Memory for a matrix, or a record of the caller's memory when `data` is given. Throws cv::Exception for
    /// steps that are smaller than the rows that they separate. When the pool gives none, neither does this:
    /// the matrix's data is null.
    cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, size_t* step,
                           OpenCvAccessFlag flags, cv::UMatUsageFlags usageFlags) const override;
    /// Always false: there is no device memory.
    bool allocate(cv::UMatData* data, OpenCvAccessFlag flags, cv::UMatUsageFlags usageFlags) const override;
    /// Throws cv::Exception while the data is still referred to.
    void deallocate(cv::UMatData* data) const override;

private:
    struct Buffers {
        std::mutex mutex;
        std::map<std::uint8_t*, IMemoryResource*> resources;
    };

    std::shared_ptr<IMemoryPool> pool;
    std::unique_ptr<Buffers> buffers; // behind a pointer because OpenCV's interface allocates through const
};

} // namespace Zentrel
