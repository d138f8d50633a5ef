// install: the lock that keeps two installation passes out of one templates directory
// at once (each one's rollback would undo the other's files). It is an flock on a
// descriptor of the directory itself, so it holds whatever spelling of the path (links,
// doubled slashes) each pass was given, across processes and within one. Any thread.
#pragma once

#include <chrono>

#include "fs/result_codes.h"
#include "text/string.h"

// Locks the existing directory `path`, polling for up to `wait` while another holds it.
// 0 with the descriptor that holds the lock in `fd` (close it to release), 32 when the
// lock stayed taken, 3 when the directory cannot be opened.
ResultCode LockDirectory(const stdx::u16string& path, std::chrono::milliseconds wait, int& fd);
