#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "fs/error_state.h"
#include "fs/file_system.h"

namespace {

constexpr mode_t kNewFileMode = 0660;

// A handle that does not fit a descriptor must not be truncated onto a live one; -1
// makes the system call fail with EBADF instead.
int DescriptorOf(FileHandle handle) {
    return handle >= 0 && handle <= INT_MAX ? static_cast<int>(handle) : -1;
}

int OpenFlags(std::uint32_t access, std::uint32_t disposition) {
    int flags = O_CLOEXEC;
    if (access >= kGenericReadWrite)
        flags |= O_RDWR;
    else
        flags |= ((access >> 30) & 1) != 0 ? O_WRONLY : O_RDONLY;
    if (disposition == kTruncateExisting) flags |= O_TRUNC;
    if (disposition == kCreateAlways) flags |= O_CREAT;
    return flags;
}

}  // namespace

ResultCode FileSystem::OpenFile(const stdx::u16string& path, std::uint32_t access,
                                std::uint32_t /*share*/, std::uint32_t disposition,
                                FileHandle& handle) {
    fsdetail::ResetLastError();
    handle = kNoHandle;
    // Measured up to its first zero unit, unlike the other operations' paths.
    const std::optional<stdx::mbstring> target = ToSystemPath(path.substr(0, path.find(u'\0')));
    if (!target) return fsdetail::StoreLastError(kInvalidParameter);
    const int fd = open(target->c_str(), OpenFlags(access, disposition), kNewFileMode);
    if (fd < 0) return fsdetail::StoreErrno(errno);
    handle = fd;
    return kOk;
}

std::uint32_t FileSystem::SetFilePointer(FileHandle handle, std::int32_t low, std::int32_t* high,
                                         std::uint32_t method) {
    fsdetail::ResetLastError();
    if (handle == kNoHandle) {
        fsdetail::StoreLastError(kInvalidHandle);
        return 0xFFFFFFFFu;
    }
    // Multiplied rather than shifted: a negative high part must not be undefined.
    std::int64_t offset = low;
    if (high != nullptr) offset += static_cast<std::int64_t>(*high) * 4294967296LL;
    const int whence = method == kFileCurrent ? SEEK_CUR : method == kFileEnd ? SEEK_END : SEEK_SET;
    // A failing lseek comes back as -1 in both halves, deliberately unmapped.
    const std::int64_t position = lseek(DescriptorOf(handle), static_cast<off_t>(offset), whence);
    if (high != nullptr) *high = static_cast<std::int32_t>(position >> 32);
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(position));
}

ResultCode FileSystem::GetLastError() { return fsdetail::LastError(); }

ResultCode FileSystem::ReadFile(FileHandle handle, void* buffer, std::uint32_t count,
                                std::uint32_t* read, void* overlapped) {
    fsdetail::ResetLastError();
    if (read == nullptr)
        return overlapped == nullptr ? fsdetail::StoreLastError(kInvalidParameter) : kOk;
    *read = 0;
    char* bytes = static_cast<char*>(buffer);
    while (*read < count) {
        const ssize_t got = ::read(DescriptorOf(handle), bytes + *read, count - *read);
        if (got < 0) return fsdetail::StoreErrno(errno);
        if (got == 0) break;
        *read += static_cast<std::uint32_t>(got);
    }
    return kOk;
}

ResultCode FileSystem::WriteFile(FileHandle handle, const void* buffer, std::uint32_t count,
                                 std::uint32_t* written, void* overlapped) {
    fsdetail::ResetLastError();
    if (written == nullptr && overlapped == nullptr)
        return fsdetail::StoreLastError(kInvalidParameter);
    if (handle == kNoHandle) return fsdetail::StoreLastError(kInvalidHandle);
    if (written == nullptr) return kOk;
    const ssize_t result = ::write(DescriptorOf(handle), buffer, count);
    *written = static_cast<std::uint32_t>(result);
    // A short or failed write still reports the (just reset) last error: the caller
    // compares *written with count.
    return result == static_cast<ssize_t>(count) ? kOk : fsdetail::LastError();
}

void FileSystem::CloseFile(FileHandle handle) {
    fsdetail::ResetLastError();
    if (close(DescriptorOf(handle)) != 0) fsdetail::StoreErrno(errno);
}

ResultCode FileSystem::GetFileTime(FileHandle handle, FileTime* creation, FileTime* access,
                                   FileTime* write) {
    fsdetail::ResetLastError();
    struct stat status;
    if (handle == kNoHandle || fstat(DescriptorOf(handle), &status) != 0)
        return fsdetail::StoreLastError(kInvalidHandle);
    // Only whole seconds are carried, matching SetFileTime.
    if (creation != nullptr) *creation = UnixTimeToFileTime(status.st_ctime);
    if (access != nullptr) *access = UnixTimeToFileTime(status.st_atime);
    if (write != nullptr) *write = UnixTimeToFileTime(status.st_mtime);
    return kOk;
}

ResultCode FileSystem::SetFileTime(FileHandle handle, const FileTime* /*creation*/,
                                   const FileTime* /*access*/, const FileTime* write) {
    // Captured before anything can touch it: without a write time the result is the
    // mapping of whatever errno the caller left behind.
    const int pendingErrno = errno;
    fsdetail::ResetLastError();
    if (handle == kNoHandle) return fsdetail::StoreLastError(kInvalidHandle);
    if (write == nullptr) return fsdetail::StoreErrno(pendingErrno);
    timeval times[2] = {};
    times[0].tv_sec = static_cast<time_t>(FileTimeToUnixTime(*write));
    times[1].tv_sec = times[0].tv_sec;
    // Best effort by design: a file whose time cannot be set is still installed.
    futimes(DescriptorOf(handle), times);
    return kOk;
}

ResultCode FileSystem::SetEndOfFile(FileHandle handle) {
    fsdetail::ResetLastError();
    if (handle == kNoHandle) return fsdetail::StoreLastError(kInvalidHandle);
    const int fd = DescriptorOf(handle);
    if (ftruncate(fd, lseek(fd, 0, SEEK_CUR)) != 0) return fsdetail::StoreErrno(errno);
    return kOk;
}
