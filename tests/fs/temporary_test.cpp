#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <set>

#include "fs/file_system.h"
#include "test_support.h"

namespace {

std::string TempDirectoryWith(const char* tmpdir) {
    EnvironmentGuard environment("TMPDIR", tmpdir);
    stdx::u16string path;
    EXPECT_EQ(kOk, FileSystem::GetTempDirectory(path));
    return Utf8(path);
}

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

TEST(TempDirectory, UsesTmpdirOnlyWhenItIsADirectory) {
    ScratchDirectory scratch;
    WriteText(scratch / "file", "x");
    EXPECT_EQ("/var/tmp/", TempDirectoryWith(nullptr));
    EXPECT_EQ("/var/tmp/", TempDirectoryWith(""));
    EXPECT_EQ("/var/tmp/", TempDirectoryWith((scratch / "file").c_str()));
    EXPECT_EQ("/var/tmp/", TempDirectoryWith((scratch / "missing").c_str()));
    EXPECT_EQ("/tmp/", TempDirectoryWith("/tmp"));
    EXPECT_EQ("/tmp/", TempDirectoryWith("/tmp/"));
    EXPECT_EQ(scratch.path() + "/", TempDirectoryWith(scratch.path().c_str()));
}

TEST(TempFile, ManyCallsGiveDistinctNewEmptyFiles) {
    ScratchDirectory scratch;
    std::set<std::string> names;
    for (int i = 0; i < 300; ++i) {
        stdx::u16string name;
        ASSERT_EQ(kOk, FileSystem::CreateTempFile(U16(scratch.path()), u"edf", name));
        const std::string path = Utf8(name);
        EXPECT_TRUE(StartsWith(path, scratch / "edf")) << path;
        EXPECT_GT(path.size(), (scratch / "edf").size());
        const struct stat status = StatOf(path);
        EXPECT_TRUE(S_ISREG(status.st_mode)) << path;
        EXPECT_EQ(0, status.st_size);
        names.insert(path);
    }
    EXPECT_EQ(300u, names.size());
    EXPECT_EQ(300u, EntriesOf(scratch.path()).size());

    // A directory that already ends in '/' gets no second one.
    stdx::u16string name;
    ASSERT_EQ(kOk, FileSystem::CreateTempFile(U16(scratch.path() + "/"), u"p", name));
    EXPECT_TRUE(StartsWith(Utf8(name), scratch / "p")) << Utf8(name);
}

TEST(TempFile, UnusableDirectoryIsCannotWriteButStillNamesTheFile) {
    ScratchDirectory scratch;
    WriteText(scratch / "file", "x");
    for (const std::string& directory : {scratch / "missing", scratch / "file"}) {
        stdx::u16string name;
        EXPECT_EQ(kCannotWrite, FileSystem::CreateTempFile(U16(directory), u"edf", name));
        EXPECT_TRUE(StartsWith(Utf8(name), directory + "/edf")) << Utf8(name);
        EXPECT_FALSE(Exists(Utf8(name)));
    }
    EXPECT_EQ(std::vector<std::string>{"file"}, EntriesOf(scratch.path()));
}

TEST(SpaceQueries, FreeSpaceSaturatesAtFourGigabytes) {
    ScratchDirectory scratch;  // the work disk has far more than 4 GiB free
    EnvironmentGuard environment("TMPDIR", scratch.path().c_str());
    std::uint32_t bytes = 0;
    EXPECT_EQ(kOk, FileSystem::GetFreeSpace(&bytes));
    EXPECT_EQ(0xFFFFFFFFu, bytes);
    EXPECT_EQ(kInvalidParameter, FileSystem::GetFreeSpace(nullptr));
}

TEST(SpaceQueries, FileSizeIsTheLowThirtyTwoBits) {
    ScratchDirectory scratch;
    std::uint32_t size = 99;
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(scratch / "missing"), &size));
    EXPECT_EQ(99u, size);
    WriteText(scratch / "five", "12345");
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(scratch / "five"), nullptr));
    EXPECT_EQ(kOk, FileSystem::GetFileSize(U16(scratch / "five"), &size));
    EXPECT_EQ(5u, size);

    const int fd = open((scratch / "sparse").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(0, ftruncate(fd, (off_t{1} << 32) + 7));
    close(fd);
    EXPECT_EQ(kOk, FileSystem::GetFileSize(U16(scratch / "sparse"), &size));
    EXPECT_EQ(7u, size);
}
