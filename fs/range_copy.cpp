#include <unistd.h>

#include <cerrno>
#include <climits>

#include "fs/error_state.h"
#include "fs/file_system.h"

namespace {

int DescriptorOf(FileHandle handle) {
    return handle >= 0 && handle <= INT_MAX ? static_cast<int>(handle) : -1;
}

// Platform difference: Linux copies between two files inside the kernel, so the bytes
// never pass through this process (and a file system may share the blocks instead).
// Elsewhere there is no such call, and -1 with ENOSYS sends the caller to the buffer.
ssize_t KernelCopy(int from, off_t* offset, int to, std::size_t count) {
#if defined(__linux__)
    return copy_file_range(from, offset, to, nullptr, count, 0);
#else
    (void)from, (void)offset, (void)to, (void)count;
    errno = ENOSYS;
    return -1;
#endif
}

// Errors that mean "the kernel cannot copy between these two files", not "the copy
// failed": the buffer takes over from where the kernel stopped. EBADF is among them
// because an output opened for appending is refused that way.
bool KernelDeclined(int error) {
    return error == ENOSYS || error == EXDEV || error == EINVAL || error == EOPNOTSUPP ||
           error == EBADF;
}

// One chunk through `buffer`: read at `offset` without moving the input, write it all.
// The bytes moved, or -1 with errno.
ssize_t BufferCopy(int from, off_t offset, int to, std::size_t count, char* buffer) {
    const ssize_t got = pread(from, buffer, count, offset);
    for (ssize_t done = 0; got > 0 && done < got;) {
        const ssize_t written = write(to, buffer + done, static_cast<std::size_t>(got - done));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            if (written == 0) errno = ENOSPC;
            return -1;
        }
        done += written;
    }
    return got;
}

}  // namespace

ResultCode FileSystem::CopyRange(FileHandle from, std::uint64_t offset, FileHandle to,
                                 std::uint32_t count, void* buffer, std::uint32_t bufferSize,
                                 std::uint32_t* copied) {
    fsdetail::ResetLastError();
    if (copied == nullptr) return fsdetail::StoreLastError(kInvalidParameter);
    *copied = 0;
    if (from == kNoHandle || to == kNoHandle) return fsdetail::StoreLastError(kInvalidHandle);
    const int in = DescriptorOf(from), out = DescriptorOf(to);
    off_t position = static_cast<off_t>(offset);
    bool kernel = true;
    while (*copied < count) {
        const std::uint32_t wanted = count - *copied;
        ssize_t moved;
        if (kernel) {
            moved = KernelCopy(in, &position, out, wanted);  // advances `position` itself
            if (moved < 0 && KernelDeclined(errno)) {
                kernel = false;
                continue;
            }
        } else {
            if (buffer == nullptr || bufferSize == 0)
                return fsdetail::StoreLastError(kInvalidParameter);
            moved = BufferCopy(in, position, out, wanted < bufferSize ? wanted : bufferSize,
                               static_cast<char*>(buffer));
            if (moved > 0) position += moved;
        }
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) return fsdetail::StoreErrno(errno);
        if (moved == 0) return fsdetail::StoreLastError(kDamagedData);  // the input ended early
        *copied += static_cast<std::uint32_t>(moved);
    }
    return kOk;
}
