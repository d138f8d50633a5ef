#include <fcntl.h>
#include <unistd.h>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// The kernel's copy (file to file) and the buffer (to a pipe, which the kernel declines)
// give the same bytes without moving the source; a source ending early gives 13.
TEST(FileRangeCopy, KernelAndBufferCopyTheSameRangeAndReportAShortSource) {
    ScratchDirectory scratch;
    std::string bytes(3 << 20, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = char(i * 7 / 3);
    WriteText(scratch / kHostile, bytes);
    FileHandle in = kNoHandle, out = kNoHandle;
    FileSystem::OpenFile(U16(scratch / kHostile), kGenericRead, 0, kOpenExisting, in);
    FileSystem::OpenFile(U16(scratch / "out"), kGenericWrite, 0, kCreateAlways, out);
    int pipeEnds[2];
    ASSERT_TRUE(pipe(pipeEnds) == 0 && fcntl(pipeEnds[1], F_SETPIPE_SZ, 1 << 20) > 0);
    char buffer[4096];
    std::uint32_t copied = 0;
    EXPECT_EQ(FileSystem::CopyRange(in, 5, out, 2 << 20, buffer, sizeof buffer, &copied), kOk);
    EXPECT_TRUE(copied == 2u << 20 && ReadText(scratch / "out") == bytes.substr(5, 2 << 20));
    EXPECT_EQ(FileSystem::CopyRange(in, 9, pipeEnds[1], 70000, buffer, sizeof buffer, &copied),
              kOk);
    std::string piped(70000, '\0');
    EXPECT_TRUE(read(pipeEnds[0], piped.data(), 70000) == 70000 && piped == bytes.substr(9, 70000));
    EXPECT_EQ(FileSystem::CopyRange(in, bytes.size() - 10, out, 20, buffer, 4096, &copied),
              kDamagedData);
    EXPECT_EQ(copied, 10u);
    for (const FileHandle handle : {in, out, FileHandle(pipeEnds[0]), FileHandle(pipeEnds[1])})
        FileSystem::CloseFile(handle);
}
