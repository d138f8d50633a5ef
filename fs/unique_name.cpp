#include "fs/unique_name.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>

namespace fsdetail {
namespace {

constexpr int kAttempts = 128;
constexpr int kSuffixLength = 6;

// Names only need to be hard to guess and unlikely to collide; O_EXCL (or mkdir, or
// symlink) settles real collisions, so a mixed counter is good enough and needs no
// lock or shared generator state.
std::uint64_t NextRandom() {
    static std::atomic<std::uint64_t> counter{0};
    std::uint64_t x = counter.fetch_add(0x9E3779B97F4A7C15ull, std::memory_order_relaxed);
    x ^= static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    x ^= static_cast<std::uint64_t>(getpid()) << 32;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

}  // namespace

int CreateUnderUniqueName(const stdx::mbstring& stem,
                          const std::function<int(const char* candidate)>& create,
                          stdx::mbstring& name) {
    static const char kAlphabet[] =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    int error = EEXIST;
    for (int attempt = 0; attempt < kAttempts && error == EEXIST; ++attempt) {
        std::uint64_t bits = NextRandom();
        name = stem;
        for (int i = 0; i < kSuffixLength; ++i) {
            name.push_back(kAlphabet[bits % (sizeof kAlphabet - 1)]);
            bits /= sizeof kAlphabet - 1;
        }
        error = create(name.c_str());
    }
    return error;
}

}  // namespace fsdetail
