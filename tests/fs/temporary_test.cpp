#include <sys/statvfs.h>

#include <algorithm>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// A folder whose name does not survive UTF-16 would be reached under another name.
TEST(TempDirectory, UsesTmpdirOnlyWhenItNamesADirectoryThatConvertsWhole) {
    ScratchDirectory scratch;
    WriteText(scratch / "file", "x");
    const std::string emoji = scratch / "\xF0\x9F\x98\x80", invalid = scratch / "\xFF";
    std::filesystem::create_directory(emoji);
    std::filesystem::create_directory(invalid);
    const std::pair<std::string, std::string> cases[] = {{scratch / "file", "/var/tmp/"},
                                                         {"/tmp", "/tmp/"},
                                                         {scratch / "", scratch / ""},
                                                         {emoji, "/var/tmp/"},
                                                         {invalid, "/var/tmp/"}};
    for (const auto& [tmpdir, expected] : cases) {
        ScopedEnvironment environment("TMPDIR", tmpdir);
        stdx::u16string path;
        FileSystem::GetTempDirectory(path);
        EXPECT_EQ(expected, Utf8(path)) << tmpdir;
    }
}

TEST(SpaceQueries, SizesAreTheLowThirtyTwoBitsAndFailuresHaveTheirCodes) {
    ScratchDirectory scratch;
    WriteText(scratch / kHostile, "");
    std::filesystem::resize_file(scratch / kHostile, (std::uintmax_t{1} << 32) + 7);  // sparse
    std::uint32_t size = 0;
    EXPECT_EQ(kOk, FileSystem::GetFileSize(U16(scratch / kHostile), &size));
    EXPECT_EQ(7u, size);
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(scratch / kHostile), nullptr));
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(scratch / "missing"), &size));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetFreeSpace(nullptr));
    // Saturated at 4 GiB, not wrapped; give or take what others write meanwhile.
    EXPECT_EQ(kOk, FileSystem::GetFreeSpace(&size));
    stdx::u16string temp;
    FileSystem::GetTempDirectory(temp);
    struct statvfs volume {};
    ASSERT_EQ(0, statvfs(Utf8(temp).c_str(), &volume));
    const double actual = static_cast<double>(volume.f_bfree) * volume.f_frsize;
    EXPECT_NEAR(std::min(actual, 4294967295.0), size, 64 << 20);
}

TEST(TempFile, EachCallMakesADistinctNewEmptyFileOrSaysItCannotWrite) {
    ScratchDirectory scratch;
    ScopedEnvironment environment("TMPDIR", scratch / "tmp");
    std::filesystem::create_directory(scratch / "tmp");
    Names names;
    for (int i = 0; i < 300; ++i) {
        // With and without a trailing slash, which must not be doubled; or none at all.
        const std::string directory[] = {scratch / "tmp", scratch / "tmp/", ""};
        stdx::u16string made;
        ASSERT_EQ(kOk, FileSystem::CreateTempFile(U16(directory[i % 3]), U16(kHostile), made));
        const std::string name = Utf8(made);
        EXPECT_EQ(scratch / "tmp/" + kHostile, name.substr(0, name.size() - 6));
        EXPECT_EQ(0, StatOf(name).st_size) << name;
        names.insert(name);
    }
    EXPECT_EQ(300u, names.size());
    EXPECT_EQ(names.size(), EntriesOf(scratch / "tmp").size());
    // The name is still reported when the file cannot be made.
    stdx::u16string name;
    EXPECT_EQ(kCannotWrite, FileSystem::CreateTempFile(U16(scratch / "no"), u"edf", name));
    EXPECT_EQ(scratch / "no/edf", Utf8(name).substr(0, name.size() - 6));
    EXPECT_FALSE(std::filesystem::exists(scratch / "no"));
}
