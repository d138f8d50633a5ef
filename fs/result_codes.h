// The numbered result codes that every module returns instead of throwing.
// The numbers follow the Win32 system error codes so they read familiarly.
#pragma once

#include <cstdint>

using ResultCode = std::uint32_t;

constexpr ResultCode kOk = 0;
constexpr ResultCode kSizeQueryFailed = 1;  // only GetFileSize uses it
constexpr ResultCode kFileNotFound = 2;
constexpr ResultCode kPathNotFound = 3;
constexpr ResultCode kInvalidHandle = 6;
constexpr ResultCode kDamagedData = 13;
constexpr ResultCode kInUse = 32;  // another installation pass holds the templates directory
constexpr ResultCode kInvalidParameter = 87;  // also: any other failure
constexpr ResultCode kAlreadyExists = 183;
constexpr ResultCode kCannotWrite = 1013;
constexpr ResultCode kCancelled = 1223;
