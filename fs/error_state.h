// Internal to fs/: the process-wide last error and the errno translation that every
// operation shares. The value is atomic so that a stray use from a second thread is a
// stale read, never a data race; it is still meaningful only on the thread that just
// made the handle call.
#pragma once

#include "fs/result_codes.h"

namespace fsdetail {

void ResetLastError();
// Stores `code` as the last error and returns it.
ResultCode StoreLastError(ResultCode code);
ResultCode LastError();
// ENOENT gives kFileNotFound, every other value kInvalidParameter; the code is stored.
ResultCode StoreErrno(int error);

}  // namespace fsdetail
