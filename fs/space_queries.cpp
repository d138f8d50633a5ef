#include <sys/statvfs.h>

#include <cstdint>
#include <limits>

#include "fs/file_system.h"

ResultCode FileSystem::GetFileSize(const stdx::u16string& path, std::uint32_t* size) {
    if (size == nullptr) return kSizeQueryFailed;
    const std::optional<stdx::mbstring> target = ToSystemPath(path);
    struct stat status;
    if (!target || stat(target->c_str(), &status) != 0) return kSizeQueryFailed;
    *size = static_cast<std::uint32_t>(static_cast<std::uint64_t>(status.st_size));
    return kOk;
}

ResultCode FileSystem::GetFreeSpace(std::uint32_t* bytes) {
    if (bytes == nullptr) return kInvalidParameter;
    *bytes = 0;
    stdx::u16string directory;
    GetTempDirectory(directory);
    const std::optional<stdx::mbstring> target = ToSystemPath(directory);
    struct statvfs volume;
    if (!target || statvfs(target->c_str(), &volume) != 0) return kOk;
    constexpr std::uint64_t kLimit = std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t blocks = volume.f_bfree;
    const std::uint64_t blockSize = volume.f_frsize;
    // Compared by division so that a huge volume cannot overflow the product.
    const bool fits = blockSize == 0 || blocks <= kLimit / blockSize;
    *bytes =
        fits ? static_cast<std::uint32_t>(blocks * blockSize) : static_cast<std::uint32_t>(kLimit);
    return kOk;
}
