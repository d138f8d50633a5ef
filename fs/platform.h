// Internal to fs/: the one place where macOS and Linux differ for this layer. The stat
// record names its nanosecond time fields st_atimespec/st_mtimespec on macOS and
// st_atim/st_mtim (POSIX 2008) elsewhere; copies across volumes need both parts.
#pragma once

#include <sys/stat.h>
#include <time.h>

namespace fsdetail {

inline timespec AccessTimeOf(const struct stat& status) {
#if defined(__APPLE__)
    return status.st_atimespec;
#else
    return status.st_atim;
#endif
}

inline timespec ModifyTimeOf(const struct stat& status) {
#if defined(__APPLE__)
    return status.st_mtimespec;
#else
    return status.st_mtim;
#endif
}

}  // namespace fsdetail
