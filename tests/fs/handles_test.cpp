#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "fs/file_system.h"
#include "test_support.h"

namespace {

class FileHandles : public ::testing::Test {
  protected:
    // Opened handles are closed at the end, so a failed assertion leaks nothing.
    FileHandle Open(const stdx::u16string& path, std::uint32_t access, std::uint32_t disposition) {
        FileHandle handle = 42;
        lastOpen = FileSystem::OpenFile(path, access, 0, disposition, handle);
        if (handle != kNoHandle) opened.push_back(handle);
        return handle;
    }
    FileHandle Open(const std::string& name, std::uint32_t access, std::uint32_t disposition) {
        return Open(U16(scratch / name), access, disposition);
    }
    void TearDown() override {
        for (FileHandle handle : opened) FileSystem::CloseFile(handle);
    }
    ScratchDirectory scratch;
    std::vector<FileHandle> opened;
    ResultCode lastOpen = kOk;
    std::uint32_t count = 0;
    char buffer[16] = {};
};

}  // namespace

TEST_F(FileHandles, DispositionsCreateWithoutTruncatingOrTruncate) {
    const mode_t savedMask = umask(0);
    EXPECT_NE(kNoHandle, Open("new", kGenericRead, kCreateAlways));  // read access still creates
    umask(savedMask);
    EXPECT_EQ(0660u, StatOf(scratch / "new").st_mode & 07777);

    WriteText(scratch / "old", "abcdef");
    const FileHandle writer = Open("old", kGenericWrite, kCreateAlways);
    EXPECT_EQ(kOk, FileSystem::WriteFile(writer, "XY", 2, &count, nullptr));
    EXPECT_EQ("XYcdef", ReadText(scratch / "old"));
    EXPECT_EQ(kOk, FileSystem::SetEndOfFile(writer));  // cutting is the writer's job
    EXPECT_EQ("XY", ReadText(scratch / "old"));

    const FileHandle both = Open("old", kGenericReadWrite, kTruncateExisting);
    EXPECT_EQ(0, StatOf(scratch / "old").st_size);
    EXPECT_EQ(kOk, FileSystem::WriteFile(both, "abc", 3, &count, nullptr));
    EXPECT_EQ(1u, FileSystem::SetFilePointer(both, 1, nullptr, kFileBegin));
    EXPECT_EQ(kOk, FileSystem::ReadFile(both, buffer, sizeof buffer, &count, nullptr));
    EXPECT_EQ("bc", std::string(buffer, count));
}

TEST_F(FileHandles, OpenMapsErrnoAndMeasuresThePathToItsFirstNul) {
    EXPECT_EQ(kNoHandle, Open("missing", kGenericRead, kOpenExisting));
    EXPECT_EQ(kFileNotFound, lastOpen);
    EXPECT_EQ(kFileNotFound, FileSystem::GetLastError());
    WriteText(scratch / "file", "content");
    EXPECT_EQ(kNoHandle, Open("file/below", kGenericRead, kOpenExisting));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());

    const FileHandle handle = Open(U16(scratch / "file") + u'\0' + u"junk", kGenericRead, 3);
    EXPECT_EQ(kOk, FileSystem::GetLastError());
    EXPECT_EQ(kOk, FileSystem::ReadFile(handle, buffer, sizeof buffer, &count, nullptr));
    EXPECT_EQ("content", std::string(buffer, count));
}

TEST_F(FileHandles, SetFilePointerCombinesHighAndLowParts) {
    WriteText(scratch / "f", "0123456789");
    const FileHandle handle = Open("f", kGenericReadWrite, kOpenExisting);
    EXPECT_EQ(10u, FileSystem::SetFilePointer(handle, 0, nullptr, kFileEnd));
    EXPECT_EQ(7u, FileSystem::SetFilePointer(handle, -3, nullptr, kFileCurrent));
    std::int32_t high = 1;
    EXPECT_EQ(4u, FileSystem::SetFilePointer(handle, 4, &high, 99));  // unknown: from start
    EXPECT_EQ(1, high);                                               // 4 GiB + 4
    // A failing seek is not mapped: -1 in both halves, last error untouched.
    high = 0;
    EXPECT_EQ(0xFFFFFFFFu, FileSystem::SetFilePointer(handle, -100, &high, kFileBegin));
    EXPECT_EQ(-1, high);
    EXPECT_EQ(kOk, FileSystem::GetLastError());
    EXPECT_EQ(0xFFFFFFFFu, FileSystem::SetFilePointer(kNoHandle, 0, nullptr, kFileBegin));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());
}

TEST_F(FileHandles, ReadFileLoopsUntilCountOrEndAndChecksItsArguments) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    opened = {ends[0], ends[1]};
    ASSERT_EQ(3, write(ends[1], "abc", 3));
    int overlapped = 0;
    EXPECT_EQ(kInvalidParameter, FileSystem::ReadFile(ends[0], buffer, 3, nullptr, nullptr));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
    EXPECT_EQ(kOk, FileSystem::ReadFile(ends[0], buffer, 3, nullptr, &overlapped));
    EXPECT_EQ(kInvalidParameter, FileSystem::ReadFile(kNoHandle, buffer, 1, &count, nullptr));

    // The rest arrives only later: one read call would return "abc" alone.
    std::thread late([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        FileSystem::WriteFile(ends[1], "defgh", 5, &count, nullptr);
        FileSystem::CloseFile(ends[1]);
    });
    char text[16] = {};
    std::uint32_t read = 0;
    EXPECT_EQ(kOk, FileSystem::ReadFile(ends[0], text, 6, &read, nullptr));
    EXPECT_EQ("abcdef", std::string(text, read));
    late.join();
    opened = {ends[0]};
    EXPECT_EQ(kOk, FileSystem::ReadFile(ends[0], text, sizeof text, &read, nullptr));
    EXPECT_EQ("gh", std::string(text, read));  // short at the end: no error
}

TEST_F(FileHandles, WriteFileArgumentRulesAndShortWrites) {
    const FileHandle handle = Open("f", kGenericWrite, kCreateAlways);
    int overlapped = 0;
    EXPECT_EQ(kInvalidParameter, FileSystem::WriteFile(handle, "x", 1, nullptr, nullptr));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
    EXPECT_EQ(kInvalidHandle, FileSystem::WriteFile(kNoHandle, "x", 1, &count, nullptr));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());
    EXPECT_EQ(kOk, FileSystem::WriteFile(handle, "x", 1, nullptr, &overlapped));
    EXPECT_EQ(0, StatOf(scratch / "f").st_size);
    {
        // One write call only: a short write shows in the count, not in the code.
        FileSizeLimit limit(10);
        EXPECT_EQ(kOk, FileSystem::WriteFile(handle, "0123456789abcdef", 16, &count, nullptr));
    }
    EXPECT_EQ(10u, count);
    EXPECT_EQ(kOk, FileSystem::WriteFile(Open("f", kGenericRead, 3), "x", 1, &count, nullptr));
    EXPECT_EQ(0xFFFFFFFFu, count);
}

TEST_F(FileHandles, FileTimesCarryWholeSecondsAndAMissingWriteTimeMapsErrno) {
    const FileHandle handle = Open("f", kGenericWrite, kCreateAlways);
    const FileTime wanted = FileSystem::UnixTimeToFileTime(1300000000) + 9999999;
    ASSERT_EQ(kOk, FileSystem::SetFileTime(handle, nullptr, nullptr, &wanted));
    FileTime creation = 0, access = 0, write = 0;
    ASSERT_EQ(kOk, FileSystem::GetFileTime(handle, &creation, &access, &write));
    EXPECT_EQ(FileSystem::UnixTimeToFileTime(1300000000), write);
    EXPECT_EQ(write, access);
    EXPECT_GT(creation, write);  // the status-change time: just now
    EXPECT_EQ(kInvalidHandle, FileSystem::GetFileTime(12345, nullptr, nullptr, &write));
    EXPECT_EQ(kInvalidHandle, FileSystem::SetFileTime(kNoHandle, nullptr, nullptr, &wanted));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());
    errno = ENOENT;
    EXPECT_EQ(kFileNotFound, FileSystem::SetFileTime(handle, nullptr, nullptr, nullptr));
    EXPECT_EQ(kFileNotFound, FileSystem::GetLastError());
    errno = EACCES;
    EXPECT_EQ(kInvalidParameter, FileSystem::SetFileTime(handle, nullptr, nullptr, nullptr));
}

TEST_F(FileHandles, InvalidHandlesFailWithoutTouchingOtherDescriptors) {
    EXPECT_EQ(kInvalidHandle, FileSystem::SetEndOfFile(kNoHandle));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());
    FileSystem::CloseFile(kNoHandle);
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
    // Would be descriptor 0 if cut to 32 bits.
    FileSystem::CloseFile(FileHandle{1} << 40);
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
}

TEST(FileTimeConversion, KnownValuesAndWholeSeconds) {
    EXPECT_EQ(116444736000000000u, FileSystem::UnixTimeToFileTime(0));
    EXPECT_EQ(1, FileSystem::FileTimeToUnixTime(116444736000000000u + 19999999));
    EXPECT_EQ(-11644473600, FileSystem::FileTimeToUnixTime(0));
    EXPECT_EQ(-1, FileSystem::FileTimeToUnixTime(FileSystem::UnixTimeToFileTime(-1)));
}
