#include <MediaConversion/MediaPipeline/MemoryPool.h>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

/// Has the system back the whole large pages inside a buffer as such, if it will. A picture of ordinary pages
/// is tens of thousands of them: each has to be cleared when it is first touched, and looked up again in
/// every pass.
void preferLargePages([[maybe_unused]] std::uint8_t* bytes, [[maybe_unused]] std::uint64_t size) {
#if defined(__linux__)
    constexpr std::uintptr_t largePage = 2 << 20;
    std::uintptr_t const address = reinterpret_cast<std::uintptr_t>(bytes);
    std::uintptr_t const begin = (address + largePage - 1) / largePage * largePage;
    std::uintptr_t const end = (address + size) / largePage * largePage;
    if (begin < end)
        ::madvise(bytes + (begin - address), end - begin, MADV_HUGEPAGE); // a wish: it may fail
#endif
}

} // namespace

HostMemoryResource::HostMemoryResource(IMemoryPool& pool, std::uint64_t size)
    : pool(&pool), bytes(new (alignment) std::uint8_t[size]), size(size) {
    preferLargePages(bytes.get(), size);
}
