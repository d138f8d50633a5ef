#include <fcntl.h>
#include <unistd.h>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// The kernel's copy and the buffer (taken where the kernel declines, as for a pipe) give
// the same bytes, leave the source's position alone and move the output's.
TEST(FileRangeCopy, KernelAndBufferCopyTheSameRangeAndReportAShortSource) {
    ScratchDirectory scratch;
    std::string bytes(3 << 20, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = char(i * 7 / 3);
    WriteText(scratch / kHostile, bytes);
    FileHandle in = kNoHandle, out = kNoHandle;
    ASSERT_EQ(FileSystem::OpenFile(U16(scratch / kHostile), kGenericRead, 0, kOpenExisting, in),
              kOk);
    ASSERT_EQ(FileSystem::OpenFile(U16(scratch / "out"), kGenericWrite, 0, kCreateAlways, out),
              kOk);
    char buffer[4096];
    std::uint32_t copied = 0;
    EXPECT_EQ(FileSystem::CopyRange(in, 5, out, 2 << 20, buffer, sizeof buffer, &copied), kOk);
    EXPECT_EQ(copied, 2u << 20);
    EXPECT_EQ(lseek(int(in), 0, SEEK_CUR), 0);
    EXPECT_EQ(lseek(int(out), 0, SEEK_CUR), 2 << 20);
    EXPECT_TRUE(ReadText(scratch / "out") == bytes.substr(5, 2 << 20));

    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    fcntl(pipeEnds[1], F_SETPIPE_SZ, 1 << 20);
    EXPECT_EQ(FileSystem::CopyRange(in, 1000, pipeEnds[1], 70000, buffer, sizeof buffer, &copied),
              kOk);
    std::string piped(70000, '\0');
    EXPECT_EQ(read(pipeEnds[0], piped.data(), piped.size()), 70000);
    EXPECT_TRUE(piped == bytes.substr(1000, 70000));

    // A source shorter than asked: what there was arrives, and 13 says the rest did not.
    EXPECT_EQ(FileSystem::CopyRange(in, bytes.size() - 10, out, 20, buffer, sizeof buffer, &copied),
              kDamagedData);
    EXPECT_EQ(copied, 10u);
    EXPECT_EQ(FileSystem::GetLastError(), kDamagedData);
    EXPECT_EQ(FileSystem::CopyRange(kNoHandle, 0, out, 1, buffer, sizeof buffer, &copied),
              kInvalidHandle);
    for (const FileHandle handle : {in, out, FileHandle(pipeEnds[0]), FileHandle(pipeEnds[1])})
        FileSystem::CloseFile(handle);
}
