#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "fs/file_system.h"
#include "test_support.h"

namespace {

FileHandle Open(const std::string& path, std::uint32_t access, std::uint32_t disposition) {
    FileHandle handle = kNoHandle;
    FileSystem::OpenFile(U16(path), access, 0, disposition, handle);
    return handle;
}

// Closes on scope exit so that a failed assertion leaks no descriptor.
struct HandleCloser {
    FileHandle handle;
    ~HandleCloser() {
        if (handle != kNoHandle) FileSystem::CloseFile(handle);
    }
};

class FileHandles : public ::testing::Test {
  protected:
    ScratchDirectory scratch;
};

}  // namespace

TEST_F(FileHandles, CreateAlwaysCreatesWithoutTruncatingEvenForReading) {
    const mode_t savedMask = umask(0);
    const FileHandle reader = Open(scratch / "new", kGenericRead, kCreateAlways);
    umask(savedMask);
    HandleCloser closeReader{reader};
    ASSERT_NE(kNoHandle, reader);
    EXPECT_EQ(0660u, StatOf(scratch / "new").st_mode & 07777);

    WriteText(scratch / "old", "abcdef");
    const FileHandle writer = Open(scratch / "old", kGenericWrite, kCreateAlways);
    HandleCloser closeWriter{writer};
    std::uint32_t written = 0;
    EXPECT_EQ(kOk, FileSystem::WriteFile(writer, "XY", 2, &written, nullptr));
    EXPECT_EQ("XYcdef", ReadText(scratch / "old"));
    // Cutting at the current position is the writer's job.
    EXPECT_EQ(kOk, FileSystem::SetEndOfFile(writer));
    EXPECT_EQ("XY", ReadText(scratch / "old"));
}

TEST_F(FileHandles, TruncateExistingEmptiesAndReadWriteAllowsBoth) {
    WriteText(scratch / "f", "0123456789");
    const FileHandle handle = Open(scratch / "f", kGenericReadWrite, kTruncateExisting);
    HandleCloser closer{handle};
    ASSERT_NE(kNoHandle, handle);
    EXPECT_EQ(0, StatOf(scratch / "f").st_size);
    std::uint32_t count = 0;
    ASSERT_EQ(kOk, FileSystem::WriteFile(handle, "abc", 3, &count, nullptr));
    ASSERT_EQ(0u, FileSystem::SetFilePointer(handle, 0, nullptr, kFileBegin));
    char buffer[8] = {};
    ASSERT_EQ(kOk, FileSystem::ReadFile(handle, buffer, sizeof buffer, &count, nullptr));
    EXPECT_EQ("abc", std::string(buffer, count));
}

TEST_F(FileHandles, OpenFailuresMapErrnoAndStoreIt) {
    FileHandle handle = 42;
    EXPECT_EQ(kFileNotFound, FileSystem::OpenFile(U16(scratch / "missing"), kGenericRead, 0,
                                                  kOpenExisting, handle));
    EXPECT_EQ(kNoHandle, handle);
    EXPECT_EQ(kFileNotFound, FileSystem::GetLastError());

    WriteText(scratch / "file", "x");
    EXPECT_EQ(kInvalidParameter, FileSystem::OpenFile(U16(scratch / "file/below"), kGenericRead, 0,
                                                      kOpenExisting, handle));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());

    // A successful call starts from a clean last error.
    const FileHandle ok = Open(scratch / "file", kGenericRead, kOpenExisting);
    HandleCloser closer{ok};
    EXPECT_EQ(kOk, FileSystem::GetLastError());
}

TEST_F(FileHandles, PathEndsAtItsFirstNul) {
    WriteText(scratch / "real", "content");
    stdx::u16string path = U16(scratch / "real");
    path.push_back(u'\0');
    path.append(u"ignored");
    FileHandle handle = kNoHandle;
    ASSERT_EQ(kOk, FileSystem::OpenFile(path, kGenericRead, 0, kOpenExisting, handle));
    HandleCloser closer{handle};
    char buffer[16];
    std::uint32_t read = 0;
    ASSERT_EQ(kOk, FileSystem::ReadFile(handle, buffer, sizeof buffer, &read, nullptr));
    EXPECT_EQ("content", std::string(buffer, read));
}

TEST_F(FileHandles, SetFilePointerCombinesHighAndLowParts) {
    WriteText(scratch / "f", "0123456789");
    const FileHandle handle = Open(scratch / "f", kGenericReadWrite, kOpenExisting);
    HandleCloser closer{handle};
    EXPECT_EQ(10u, FileSystem::SetFilePointer(handle, 0, nullptr, kFileEnd));
    EXPECT_EQ(7u, FileSystem::SetFilePointer(handle, -3, nullptr, kFileCurrent));
    EXPECT_EQ(2u, FileSystem::SetFilePointer(handle, 2, nullptr, 99));  // unknown: from start

    std::int32_t high = 1;
    EXPECT_EQ(5u, FileSystem::SetFilePointer(handle, 5, &high, kFileBegin));
    EXPECT_EQ(1, high);
    high = 0;
    EXPECT_EQ(4u, FileSystem::SetFilePointer(handle, -1, &high, kFileCurrent));
    EXPECT_EQ(1, high);  // 4 GiB + 4
    EXPECT_EQ(kOk, FileSystem::GetLastError());

    // A failing seek is not mapped: -1 in both halves, last error untouched.
    high = 0;
    EXPECT_EQ(0xFFFFFFFFu, FileSystem::SetFilePointer(handle, -100, &high, kFileBegin));
    EXPECT_EQ(-1, high);
    EXPECT_EQ(kOk, FileSystem::GetLastError());

    EXPECT_EQ(0xFFFFFFFFu, FileSystem::SetFilePointer(kNoHandle, 0, nullptr, kFileBegin));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());
}

TEST_F(FileHandles, ReadFileArgumentsAndEndOfFile) {
    WriteText(scratch / "f", "abc");
    const FileHandle handle = Open(scratch / "f", kGenericRead, kOpenExisting);
    HandleCloser closer{handle};
    char buffer[8];
    int overlapped = 0;
    std::uint32_t read = 77;

    EXPECT_EQ(kInvalidParameter, FileSystem::ReadFile(handle, buffer, 3, nullptr, nullptr));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
    EXPECT_EQ(kOk, FileSystem::ReadFile(handle, buffer, 3, nullptr, &overlapped));
    EXPECT_EQ(kOk, FileSystem::ReadFile(handle, buffer, 0, &read, nullptr));
    EXPECT_EQ(0u, read);
    // Nothing was consumed by the calls above.
    EXPECT_EQ(kOk, FileSystem::ReadFile(handle, buffer, sizeof buffer, &read, nullptr));
    EXPECT_EQ("abc", std::string(buffer, read));
    EXPECT_EQ(kOk, FileSystem::ReadFile(handle, buffer, sizeof buffer, &read, nullptr));
    EXPECT_EQ(0u, read);

    EXPECT_EQ(kInvalidParameter, FileSystem::ReadFile(kNoHandle, buffer, 1, &read, nullptr));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
}

TEST_F(FileHandles, ReadFileKeepsReadingUntilCountOrEnd) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    ASSERT_EQ(3, write(ends[1], "abc", 3));
    std::thread late([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        static_cast<void>(write(ends[1], "defgh", 5));
        close(ends[1]);
    });
    char buffer[16];
    std::uint32_t read = 0;
    EXPECT_EQ(kOk, FileSystem::ReadFile(ends[0], buffer, 6, &read, nullptr));
    EXPECT_EQ("abcdef", std::string(buffer, read));
    EXPECT_EQ(kOk, FileSystem::ReadFile(ends[0], buffer, sizeof buffer, &read, nullptr));
    EXPECT_EQ("gh", std::string(buffer, read));
    late.join();
    close(ends[0]);
}

TEST_F(FileHandles, WriteFileArgumentsAndShortWrites) {
    const FileHandle handle = Open(scratch / "f", kGenericWrite, kCreateAlways);
    HandleCloser closer{handle};
    int overlapped = 0;
    std::uint32_t written = 0;

    EXPECT_EQ(kInvalidParameter, FileSystem::WriteFile(handle, "x", 1, nullptr, nullptr));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
    EXPECT_EQ(kInvalidHandle, FileSystem::WriteFile(kNoHandle, "x", 1, &written, nullptr));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());
    EXPECT_EQ(kOk, FileSystem::WriteFile(handle, "x", 1, nullptr, &overlapped));
    EXPECT_EQ(0, StatOf(scratch / "f").st_size);

    {
        // One write call only: a short write is reported through *written, not the code.
        FileSizeLimit limit(10);
        EXPECT_EQ(kOk,
                  FileSystem::WriteFile(handle, "0123456789abcdefghij", 20, &written, nullptr));
    }
    EXPECT_EQ(10u, written);
    EXPECT_EQ(kOk, FileSystem::GetLastError());

    const FileHandle reader = Open(scratch / "f", kGenericRead, kOpenExisting);
    HandleCloser closeReader{reader};
    EXPECT_EQ(kOk, FileSystem::WriteFile(reader, "x", 1, &written, nullptr));
    EXPECT_EQ(0xFFFFFFFFu, written);
}

TEST_F(FileHandles, FileTimesRoundTripInWholeSeconds) {
    const FileHandle handle = Open(scratch / "f", kGenericWrite, kCreateAlways);
    HandleCloser closer{handle};
    const FileTime wanted = FileSystem::UnixTimeToFileTime(1300000000) + 9999999;
    ASSERT_EQ(kOk, FileSystem::SetFileTime(handle, nullptr, nullptr, &wanted));
    FileTime creation = 0, access = 0, write = 0;
    ASSERT_EQ(kOk, FileSystem::GetFileTime(handle, &creation, &access, &write));
    EXPECT_EQ(FileSystem::UnixTimeToFileTime(1300000000), write);
    EXPECT_EQ(write, access);
    EXPECT_GT(creation, write);  // status-change time: just now
    EXPECT_EQ(kOk, FileSystem::GetFileTime(handle, nullptr, nullptr, nullptr));

    EXPECT_EQ(kInvalidHandle, FileSystem::GetFileTime(kNoHandle, nullptr, nullptr, &write));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());
    EXPECT_EQ(kInvalidHandle, FileSystem::GetFileTime(12345, nullptr, nullptr, &write));
    EXPECT_EQ(kInvalidHandle, FileSystem::SetFileTime(kNoHandle, nullptr, nullptr, &wanted));
}

TEST_F(FileHandles, SetFileTimeWithoutWriteTimeMapsTheCurrentErrno) {
    const FileHandle handle = Open(scratch / "f", kGenericWrite, kCreateAlways);
    HandleCloser closer{handle};
    errno = ENOENT;
    EXPECT_EQ(kFileNotFound, FileSystem::SetFileTime(handle, nullptr, nullptr, nullptr));
    EXPECT_EQ(kFileNotFound, FileSystem::GetLastError());
    errno = EACCES;
    EXPECT_EQ(kInvalidParameter, FileSystem::SetFileTime(handle, nullptr, nullptr, nullptr));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
}

TEST_F(FileHandles, SetEndOfFileAndCloseReportFailures) {
    EXPECT_EQ(kInvalidHandle, FileSystem::SetEndOfFile(kNoHandle));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());

    WriteText(scratch / "f", "0123456789");
    const FileHandle reader = Open(scratch / "f", kGenericRead, kOpenExisting);
    ASSERT_NE(kNoHandle, reader);
    FileSystem::SetFilePointer(reader, 4, nullptr, kFileBegin);
    EXPECT_EQ(kInvalidParameter, FileSystem::SetEndOfFile(reader));
    EXPECT_EQ(10, StatOf(scratch / "f").st_size);
    FileSystem::CloseFile(reader);
    EXPECT_EQ(kOk, FileSystem::GetLastError());
    FileSystem::CloseFile(reader);  // already closed
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
    // Out-of-range handles never alias a live descriptor.
    FileSystem::CloseFile(FileHandle{1} << 40);
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
}

TEST(FileTimeConversion, KnownValuesAndWholeSeconds) {
    EXPECT_EQ(116444736000000000u, FileSystem::UnixTimeToFileTime(0));
    EXPECT_EQ(0, FileSystem::FileTimeToUnixTime(116444736000000000u));
    EXPECT_EQ(1, FileSystem::FileTimeToUnixTime(116444736000000000u + 19999999));
    EXPECT_EQ(-11644473600, FileSystem::FileTimeToUnixTime(0));
    EXPECT_EQ(116444735990000000u, FileSystem::UnixTimeToFileTime(-1));
    for (std::int64_t seconds : {std::int64_t{-86400}, std::int64_t{1}, std::int64_t{1700000000},
                                 std::int64_t{4102444800}}) {
        EXPECT_EQ(seconds, FileSystem::FileTimeToUnixTime(FileSystem::UnixTimeToFileTime(seconds)));
    }
}
