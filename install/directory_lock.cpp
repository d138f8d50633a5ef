#include "install/directory_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "fs/file_system.h"

namespace {
constexpr std::chrono::milliseconds kPollInterval(20);
}  // namespace

ResultCode LockDirectory(const stdx::u16string& path, std::chrono::milliseconds wait, int& fd) {
    fd = -1;
    const std::optional<stdx::mbstring> system = FileSystem::ToSystemPath(path);
    if (!system) return kPathNotFound;
    const auto deadline = std::chrono::steady_clock::now() + wait;
    for (;;) {
        const int held = open(system->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (held < 0) return kPathNotFound;
        if (flock(held, LOCK_EX | LOCK_NB) == 0) {
            // The pass before may have removed the directory it made, and another put a
            // new one there: a lock on the old one would guard nothing.
            struct stat locked, named;
            if (fstat(held, &locked) == 0 && stat(system->c_str(), &named) == 0 &&
                locked.st_dev == named.st_dev && locked.st_ino == named.st_ino) {
                fd = held;
                return kOk;
            }
        } else if (errno != EWOULDBLOCK) {
            close(held);
            return kPathNotFound;
        }
        close(held);
        if (std::chrono::steady_clock::now() >= deadline) return kInUse;
        std::this_thread::sleep_for(kPollInterval);
    }
}
