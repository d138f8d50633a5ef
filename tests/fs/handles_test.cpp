#include <sys/socket.h>

#include <cerrno>
#include <vector>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

namespace {

// The code a handle call returns and the one it leaves as the last error must agree.
testing::AssertionResult Stored(ResultCode expected, ResultCode returned) {
    const ResultCode last = FileSystem::GetLastError();
    if (returned == expected && last == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "returned " << returned << ", last error " << last;
}

class FileHandles : public ::testing::Test {
  protected:
    // Everything opened is closed at the end, so a failed assertion leaks nothing.
    FileHandle Open(const std::string& name, std::uint32_t access, std::uint32_t disposition) {
        FileHandle handle = 42;
        opened = FileSystem::OpenFile(U16(scratch / name), access, 0, disposition, handle);
        if (handle != kNoHandle) handles.push_back(handle);
        return handle;
    }
    void TearDown() override {
        for (FileHandle handle : handles) FileSystem::CloseFile(handle);
    }
    ScratchDirectory scratch;
    std::vector<FileHandle> handles;
    ResultCode opened = kOk;
    std::uint32_t count = 0;
    char buffer[16] = {};
};

}  // namespace

TEST_F(FileHandles, DispositionsAndPositionsDecideWhatIsReadAndKept) {
    const mode_t savedMask = umask(0);
    Open(kHostile, kGenericRead, kCreateAlways);  // read access still creates
    umask(savedMask);
    EXPECT_EQ(0660u, StatOf(scratch / kHostile).st_mode & 07777);

    // Creating over an old file keeps its bytes: cutting them is the writer's job.
    WriteText(scratch / kHostile, "abcdef");
    const FileHandle writer = Open(kHostile, kGenericWrite, kCreateAlways);
    EXPECT_EQ(kOk, FileSystem::WriteFile(writer, "XY", 2, &count, nullptr));
    EXPECT_EQ("XYcdef", ReadText(scratch / kHostile));
    EXPECT_EQ(kOk, FileSystem::SetEndOfFile(writer));
    EXPECT_EQ("XY", ReadText(scratch / kHostile));

    const FileHandle both = Open(kHostile, kGenericReadWrite, kTruncateExisting);
    EXPECT_EQ(kOk, FileSystem::WriteFile(both, "abc", 3, &count, nullptr));
    EXPECT_EQ(1u, FileSystem::SetFilePointer(both, -2, nullptr, kFileCurrent));
    EXPECT_EQ(kOk, FileSystem::ReadFile(both, buffer, sizeof buffer, &count, nullptr));
    EXPECT_EQ("bc", std::string(buffer, count));
    std::int32_t high = 1;
    EXPECT_EQ(4u, FileSystem::SetFilePointer(both, 4, &high, kFileBegin));
    EXPECT_EQ(1, high);  // 4 GiB + 4

    // ReadFile keeps reading until the count is met: each read of a datagram socket
    // returns one message at most.
    int ends[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_DGRAM, 0, ends));
    handles.insert(handles.end(), ends, ends + 2);
    ASSERT_EQ(3, write(ends[1], "abc", 3));
    ASSERT_EQ(5, write(ends[1], "defgh", 5));
    EXPECT_EQ(kOk, FileSystem::ReadFile(ends[0], buffer, 8, &count, nullptr));
    EXPECT_EQ("abcdefgh", std::string(buffer, count));
}

TEST_F(FileHandles, FailuresComeBackAsCodesAndAsTheLastError) {
    EXPECT_EQ(kNoHandle, Open("missing", kGenericRead, kOpenExisting));
    EXPECT_TRUE(Stored(kFileNotFound, opened));
    WriteText(scratch / "file", "");
    EXPECT_EQ(kNoHandle, Open("file/below", kGenericRead, kOpenExisting));
    EXPECT_TRUE(Stored(kInvalidParameter, opened));

    const FileHandle file = Open("file", kGenericWrite, kOpenExisting);
    EXPECT_TRUE(Stored(kInvalidParameter, FileSystem::ReadFile(file, buffer, 1, nullptr, nullptr)));
    EXPECT_TRUE(Stored(kInvalidParameter, FileSystem::WriteFile(file, "x", 1, nullptr, nullptr)));
    EXPECT_TRUE(Stored(kInvalidHandle, FileSystem::WriteFile(kNoHandle, "x", 1, &count, nullptr)));
    EXPECT_TRUE(Stored(kInvalidHandle, FileSystem::GetFileTime(12345, nullptr, nullptr, nullptr)));
    EXPECT_EQ(0xFFFFFFFFu, FileSystem::SetFilePointer(kNoHandle, 0, nullptr, kFileBegin));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());
    FileSystem::CloseFile(FileHandle{1} << 40);  // would be descriptor 0 if cut to 32 bits
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
    // One write call only: a short write shows in the count, not in the code.
    FileSizeLimit limit(10);
    EXPECT_EQ(kOk, FileSystem::WriteFile(file, "0123456789abcdef", 16, &count, nullptr));
    EXPECT_EQ(10u, count);
}

TEST_F(FileHandles, FileTimesCarryWholeSecondsAndAMissingWriteTimeMapsErrno) {
    EXPECT_EQ(116444736000000000u, FileSystem::UnixTimeToFileTime(0));
    EXPECT_EQ(-1, FileSystem::FileTimeToUnixTime(FileSystem::UnixTimeToFileTime(-1)));
    const FileHandle handle = Open("f", kGenericWrite, kCreateAlways);
    const FileTime wanted = FileSystem::UnixTimeToFileTime(1300000000) + 9999999;
    ASSERT_EQ(kOk, FileSystem::SetFileTime(handle, nullptr, nullptr, &wanted));
    FileTime access = 0, write = 0;
    ASSERT_EQ(kOk, FileSystem::GetFileTime(handle, nullptr, &access, &write));
    EXPECT_EQ(FileSystem::UnixTimeToFileTime(1300000000), write);
    EXPECT_EQ(write, access);
    errno = ENOENT;
    EXPECT_TRUE(Stored(kFileNotFound, FileSystem::SetFileTime(handle, nullptr, nullptr, nullptr)));
}
