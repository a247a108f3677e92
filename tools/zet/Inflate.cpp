// Most of the time that it takes to read a compressed EXR goes into zlib's "uncompress". This program has its
// own function of that name, which the loader finds before zlib's: the same bytes in a third of the time.
#include <libdeflate.h>

#include <zlib.h>

#include <cstddef>

namespace {

/// A decompressor for each thread.
class Decompressor {
public:
    Decompressor() = default;
    ~Decompressor() { libdeflate_free_decompressor(state); }
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    /// Null when there is no memory for it.
    libdeflate_decompressor* get() const { return state; }

private:
    libdeflate_decompressor* state = libdeflate_alloc_decompressor();
};

} // namespace

/// As zlib documents it.
extern "C" int uncompress(Bytef* to, uLongf* toBytes, const Bytef* from, uLong fromBytes) {
    static thread_local const Decompressor decompressor;
    std::size_t written = 0;
    if (decompressor.get() && libdeflate_zlib_decompress(decompressor.get(), from, fromBytes, to, *toBytes,
                                                         &written) == LIBDEFLATE_SUCCESS) {
        *toBytes = static_cast<uLongf>(written);
        return Z_OK;
    }
    // What fails does so as with zlib, which tells more and keeps what came out until then.
    return uncompress2(to, toBytes, from, &fromBytes);
}
