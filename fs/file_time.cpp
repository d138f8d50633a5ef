#include "fs/file_system.h"

namespace {
constexpr std::uint64_t kTicksPerSecond = 10000000u;
constexpr std::uint64_t kSecondsFrom1601To1970 = 11644473600u;
}  // namespace

std::int64_t FileSystem::FileTimeToUnixTime(FileTime time) {
    return static_cast<std::int64_t>(time / kTicksPerSecond) -
           static_cast<std::int64_t>(kSecondsFrom1601To1970);
}

FileTime FileSystem::UnixTimeToFileTime(std::int64_t seconds) {
    // Unsigned arithmetic: out-of-range values wrap instead of overflowing a signed type.
    return static_cast<std::uint64_t>(seconds) * kTicksPerSecond +
           kSecondsFrom1601To1970 * kTicksPerSecond;
}
