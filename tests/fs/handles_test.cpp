#include <sys/socket.h>

#include <cerrno>
#include <vector>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// The code a handle call returns and the one it leaves as the last error must agree.
static testing::AssertionResult Stored(ResultCode expected, ResultCode returned) {
    const ResultCode last = FileSystem::GetLastError();
    if (returned == expected && last == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "returned " << returned << ", last error " << last;
}

TEST(FileHandles, DispositionsPositionsTimesAndFailuresAsCodesAndAsTheLastError) {
    ScratchDirectory scratch;
    std::vector<FileHandle> handles;
    std::uint32_t count = 0;
    char buffer[16] = {};
    // Opens with an access and a disposition; a failed open leaves no handle.
    const auto openFile = [&](std::string name, auto access, auto how, ResultCode code = kOk) {
        FileHandle fd = 42;
        EXPECT_TRUE(Stored(code, FileSystem::OpenFile(U16(scratch / name), access, 0, how, fd)));
        EXPECT_EQ(code == kOk, fd != kNoHandle) << name;
        return handles.emplace_back(fd);
    };
    openFile(kHostile, kGenericRead, kCreateAlways);  // read access still creates

    // Creating over an old file keeps its bytes: cutting them is the writer's job.
    WriteText(scratch / kHostile, "abcdef");
    const FileHandle writer = openFile(kHostile, kGenericWrite, kCreateAlways);
    EXPECT_EQ(kOk, FileSystem::WriteFile(writer, "XY", 2, &count, nullptr));
    EXPECT_EQ("XYcdef", ReadText(scratch / kHostile));
    EXPECT_EQ(kOk, FileSystem::SetEndOfFile(writer));
    EXPECT_EQ("XY", ReadText(scratch / kHostile));

    // Times carry whole seconds since 1601.
    EXPECT_EQ(-11644473600, FileSystem::FileTimeToUnixTime(0));
    const FileTime wanted = FileSystem::UnixTimeToFileTime(1300000000) + 9999999;
    ASSERT_EQ(kOk, FileSystem::SetFileTime(writer, nullptr, nullptr, &wanted));
    FileTime accessed = 0, modified = 0;
    ASSERT_EQ(kOk, FileSystem::GetFileTime(writer, nullptr, &accessed, &modified));
    EXPECT_EQ(wanted - 9999999, modified);
    EXPECT_EQ(modified, accessed);

    const FileHandle both = openFile(kHostile, kGenericReadWrite, kTruncateExisting);
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
    ASSERT_TRUE(write(ends[1], "abc", 3) == 3 && write(ends[1], "defgh", 5) == 5);
    EXPECT_EQ(kOk, FileSystem::ReadFile(ends[0], buffer, 8, &count, nullptr));
    EXPECT_EQ("abcdefgh", std::string(buffer, count));

    openFile("missing", kGenericRead, kOpenExisting, kFileNotFound);
    openFile(kHostile + "/below", kGenericRead, kOpenExisting, kInvalidParameter);
    EXPECT_TRUE(Stored(kInvalidParameter, FileSystem::ReadFile(both, buffer, 1, nullptr, nullptr)));
    EXPECT_TRUE(Stored(kInvalidParameter, FileSystem::WriteFile(writer, "x", 1, nullptr, nullptr)));
    EXPECT_TRUE(Stored(kInvalidHandle, FileSystem::WriteFile(kNoHandle, "x", 1, &count, nullptr)));
    EXPECT_TRUE(Stored(kInvalidHandle, FileSystem::GetFileTime(12345, nullptr, nullptr, nullptr)));
    EXPECT_EQ(0xFFFFFFFFu, FileSystem::SetFilePointer(kNoHandle, 0, nullptr, kFileBegin));
    EXPECT_EQ(kInvalidHandle, FileSystem::GetLastError());
    FileSystem::CloseFile(FileHandle{1} << 40);  // would be descriptor 0 if cut to 32 bits
    EXPECT_EQ(kInvalidParameter, FileSystem::GetLastError());
    // One write call only: a short write shows in the count, not in the code.
    FileSizeLimit limit(10);
    const FileHandle fresh = openFile("fresh", kGenericWrite, kCreateAlways);
    EXPECT_EQ(kOk, FileSystem::WriteFile(fresh, "0123456789abcdef", 16, &count, nullptr));
    EXPECT_EQ(10u, count);
    for (const FileHandle handle : handles) FileSystem::CloseFile(handle);
}
