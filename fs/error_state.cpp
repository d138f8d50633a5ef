#include "fs/error_state.h"

#include <atomic>
#include <cerrno>

namespace fsdetail {
namespace {
// Relaxed ordering is enough: the value carries no other data with it.
std::atomic<ResultCode> lastError{kOk};
}  // namespace

void ResetLastError() { lastError.store(kOk, std::memory_order_relaxed); }

ResultCode StoreLastError(ResultCode code) {
    lastError.store(code, std::memory_order_relaxed);
    return code;
}

ResultCode LastError() { return lastError.load(std::memory_order_relaxed); }

ResultCode StoreErrno(int error) {
    return StoreLastError(error == ENOENT ? kFileNotFound : kInvalidParameter);
}

}  // namespace fsdetail
