#include <MediaConversion/MediaPipeline/OpenCvMatAllocator.h>

#include <opencv2/core.hpp>

namespace Zentrel {

namespace {

constexpr size_t automaticStep = 0x7fffffff; // CV_AUTOSTEP, which only the C interface's header defines

/// What matrix data carries in `userdata`: keeps the allocator alive for as long as the data exists.
using KeepAlive = std::shared_ptr<OpenCvMatAllocator const>;

void require(bool condition, const char* text, const char* function) {
    if (!condition)
        cv::error(cv::Error::StsAssert, text, function, "MediaPipeline/OpenCvMatAllocator", __LINE__);
}

/// The bytes that a matrix takes; completes the steps.
size_t totalBytes(int dims, const int* sizes, int type, size_t* step) {
    size_t total = CV_ELEM_SIZE(type);
    for (int i = dims - 1; i >= 0; --i) {
        if (step) {
            if (step[i] == automaticStep)
                step[i] = total;
            require(total <= step[i], "total <= step[i]", "allocate");
            total = step[i];
        }
        total *= static_cast<size_t>(sizes[i]);
    }
    return total;
}

} // namespace

OpenCvMatAllocator::OpenCvMatAllocator(std::shared_ptr<IMemoryPool> pool)
    : pool(std::move(pool)), buffers(std::make_unique<Buffers>()) {}

OpenCvMatAllocator::~OpenCvMatAllocator() = default;

std::uint8_t* OpenCvMatAllocator::acquire(std::uint64_t size) const {
    IMemoryResource* const resource = pool->acquire(size);
    if (!resource)
        return nullptr;

    try {
        std::lock_guard const lock(buffers->mutex);
        buffers->resources[resource->buffer()] = resource;
    } catch (...) { // there was no memory for the record
        pool->release(resource);
        throw;
    }
    return resource->buffer();
}

void OpenCvMatAllocator::release(std::uint8_t* buffer) const {
    std::lock_guard const lock(buffers->mutex);
    pool->release(buffers->resources.at(buffer));
    buffers->resources.erase(buffer);
}

cv::UMatData* OpenCvMatAllocator::allocate(int dims, const int* sizes, int type, void* data, size_t* step,
                                           OpenCvAccessFlag, cv::UMatUsageFlags) const {
    size_t const total = totalBytes(dims, sizes, type, step);

    auto keepAlive = std::make_unique<KeepAlive>(weak_from_this().lock());
    auto result = std::make_unique<cv::UMatData>(this);
    result->data = result->origdata = data ? static_cast<std::uint8_t*>(data) : acquire(total);
    result->size = total;
    if (data)
        result->flags |= cv::UMatData::USER_ALLOCATED;
    result->userdata = keepAlive.release();
    return result.release();
}

bool OpenCvMatAllocator::allocate(cv::UMatData*, OpenCvAccessFlag, cv::UMatUsageFlags) const { return false; }

void OpenCvMatAllocator::deallocate(cv::UMatData* data) const {
    if (!data)
        return;
    require(data->urefcount == 0, "u->urefcount == 0", "deallocate");
    require(data->refcount == 0, "u->refcount == 0", "deallocate");

    std::unique_ptr<KeepAlive> const keepAlive(static_cast<KeepAlive*>(data->userdata)); // the last to go
    if (!(data->flags & cv::UMatData::USER_ALLOCATED) && data->origdata)
        release(data->origdata);
    delete data;
}

} // namespace Zentrel
