// Pooled host memory: buffers that are handed out again instead of being allocated for every frame.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>

class IMemoryPool;

/// A block of memory that a pool owns.
class IMemoryResource {
public:
    virtual ~IMemoryResource() = default;

    virtual std::uint8_t* buffer() = 0;
    /// Bytes in the buffer.
    virtual std::uint64_t bufferSize() const = 0;
    virtual IMemoryPool& parentPool() const = 0;
};

/// Hands out memory and takes it back. Implementations are thread-safe.
class IMemoryPool {
public:
    virtual ~IMemoryPool() = default;

    /// A resource of at least `size` bytes, or null when there is none. The pool keeps owning it. A pool for
    /// frames had better throw than give null: OpenCV's functions do not expect matrices without memory.
    virtual IMemoryResource* acquire(std::uint64_t size) = 0;
    virtual void release(IMemoryResource* resource) = 0;
    /// The resources that the pool holds, busy or idle.
    virtual std::size_t count() const = 0;
};

/// Heap memory, uninitialised, in large pages where the system has them. It begins at a multiple of 64 bytes,
/// so that no vector lies across two lines of the cache.
class HostMemoryResource final : public IMemoryResource {
public:
    HostMemoryResource(IMemoryPool& pool, std::uint64_t size);

    std::uint8_t* buffer() override { return bytes.get(); }
    std::uint64_t bufferSize() const override { return size; }
    IMemoryPool& parentPool() const override { return *pool; }

private:
    static constexpr std::align_val_t alignment{64};
    struct Delete {
        void operator()(std::uint8_t* bytes) const { ::operator delete[](bytes, alignment); }
    };

    IMemoryPool* pool;
    std::unique_ptr<std::uint8_t[], Delete> bytes;
    std::uint64_t size;
};

/// A pool that, when `prune` is set, frees a buffer that has stayed idle for a number of acquisitions, so
/// that a change of picture size does not leave the old buffers behind.
template <class Resource, bool prune>
class SelfPruningMemoryPool final : public IMemoryPool {
public:
    /// `maxIdleAcquisitions`: the acquisitions during which a buffer may lie idle; the last of them frees it.
    explicit SelfPruningMemoryPool(std::int32_t maxIdleAcquisitions)
        : maxIdleAcquisitions(maxIdleAcquisitions) {}

    SelfPruningMemoryPool(SelfPruningMemoryPool const&) = delete;
    SelfPruningMemoryPool& operator=(SelfPruningMemoryPool const&) = delete;

    /// The first idle buffer, in the order of addresses, that is large enough; a new one when none is.
    IMemoryResource* acquire(std::uint64_t size) override {
        std::lock_guard const lock(mutex);
        Entry& entry = findIdle(size);
        entry.inUse = 1;
        entry.idleAcquisitions = 0;
        if constexpr (prune)
            pruneIdle();
        return entry.resource.get();
    }

    /// Marks the resource idle; releasing an idle one again changes nothing. Throws std::runtime_error for a
    /// resource that is not this pool's.
    void release(IMemoryResource* resource) override {
        std::lock_guard const lock(mutex);
        auto const found = entries.find(resource);
        if (found == entries.end())
            throw std::runtime_error(
                "Cannot release memory resource that is not a member of this memory pool");
        found->second.inUse = 0;
    }

    std::size_t count() const override {
        std::lock_guard const lock(mutex);
        return entries.size();
    }

private:
    struct Entry {
        std::unique_ptr<Resource> resource;
        std::uint32_t inUse = 0;
        std::int32_t idleAcquisitions = 0;
    };

    Entry& findIdle(std::uint64_t size) {
        auto const idle = std::find_if(entries.begin(), entries.end(), [size](auto const& item) {
            return !item.second.inUse && item.second.resource->bufferSize() >= size;
        });
        if (idle != entries.end())
            return idle->second;

        auto resource = std::make_unique<Resource>(*this, size);
        IMemoryResource* const key = resource.get();
        return entries.emplace(key, Entry{std::move(resource)}).first->second;
    }

    void pruneIdle() {
        for (auto item = entries.begin(); item != entries.end();) {
            Entry& entry = item->second;
            bool const expired = !entry.inUse && ++entry.idleAcquisitions >= maxIdleAcquisitions;
            item = expired ? entries.erase(item) : std::next(item);
        }
    }

    std::map<IMemoryResource*, Entry, std::less<>> entries;
    mutable std::mutex mutex;
    std::int32_t maxIdleAcquisitions;
};

/// Holds one buffer of a pool and gives it back when destroyed. The pool must outlive the holder.
class MemoryAccess {
public:
    /// Throws std::runtime_error when the pool has no memory to give.
    MemoryAccess(IMemoryPool& pool, std::uint64_t size)
        : pool(pool), resource(pool.acquire(size)), size(size) {
        if (!resource)
            throw std::runtime_error("Could not acquire memory resource of size " + std::to_string(size));
    }

    /// Acquires a buffer of its own from the same pool and copies the bytes.
    MemoryAccess(MemoryAccess const& other) : MemoryAccess(other.pool, other.size) {
        std::memcpy(data(), other.data(), size);
    }

    /// Refers to the same buffer as `other`, which goes on releasing it too: from then on, the buffer is idle
    /// as soon as the first of the two is gone. Hand a holder on by pointer to keep the buffer.
    MemoryAccess(MemoryAccess&& other) noexcept = default;

    MemoryAccess& operator=(MemoryAccess const&) = delete;
    MemoryAccess& operator=(MemoryAccess&&) = delete;

    ~MemoryAccess() {
        if (!resource)
            return;
        try {
            pool.release(resource);
        } catch (std::runtime_error const&) {
            // The other holder of a moved buffer released it earlier and the pool has freed it since.
        }
    }

    std::uint8_t* data() const { return resource->buffer(); }
    /// The bytes asked for; the buffer itself may be larger.
    std::uint64_t dataSize() const { return size; }

private:
    IMemoryPool& pool;
    IMemoryResource* resource;
    std::uint64_t size;
};
