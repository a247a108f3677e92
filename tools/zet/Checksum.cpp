#include "Checksum.h"

#include <fmt/format.h>
#include <xxhash.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

namespace ZetTool {
namespace {

std::string text(const XXH128_hash_t& hash) { return fmt::format("{:016x}{:016x}", hash.high64, hash.low64); }

struct FreeState {
    void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
};

} // namespace

FileSum sumBytes(const void* data, std::size_t bytes) { return {text(XXH3_128bits(data, bytes)), bytes}; }

FileSum sumFile(const std::filesystem::path& file) {
    constexpr std::size_t pieceBytes = 1 << 20;
    const std::unique_ptr<XXH3_state_t, FreeState> state(XXH3_createState());
    XXH3_128bits_reset(state.get());
    std::vector<char> piece(pieceBytes);
    std::uint64_t bytes = 0;

    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error(fmt::format("cannot be opened: {}", std::strerror(errno)));
    while (stream) {
        stream.read(piece.data(), pieceBytes);
        const auto count = static_cast<std::size_t>(stream.gcount());
        XXH3_128bits_update(state.get(), piece.data(), count);
        bytes += count;
    }
    if (!stream.eof())
        throw std::runtime_error(fmt::format("cannot be read beyond byte {}", bytes));
    return {text(XXH3_128bits_digest(state.get())), bytes};
}

} // namespace ZetTool
