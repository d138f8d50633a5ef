// The executable's own path needs a different query on each system: macOS has
// proc_pidpath, Linux (where the portable core is built and tested) exposes the link
// /proc/self/exe. This file is the only place that knows the difference.
#include "kit/executable_path.h"

#include <unistd.h>

#if defined(__APPLE__)
#include <libproc.h>
#endif

namespace {
constexpr int kPathBufferSize = 4096;
}

stdx::mbstring ExecutablePath() {
    char buffer[kPathBufferSize] = {};
#if defined(__APPLE__)
    const int length = proc_pidpath(getpid(), buffer, sizeof buffer);
#else
    const auto length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
#endif
    if (length < 1) return stdx::mbstring();
    return stdx::mbstring(buffer, static_cast<std::size_t>(length));
}
