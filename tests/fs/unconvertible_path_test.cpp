#include <functional>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// The conversion stops at the first unit it cannot convert, so each of these paths
// would otherwise reach the planted entry it starts with (or the folder holding it).
TEST(UnconvertiblePath, EveryPathOperationRefusesItAndTouchesNothing) {
    ScratchDirectory scratch;
    WriteText(scratch / "victim/keep", "kept");
    WriteText(scratch / "other", "other");
    WriteText(scratch / "new", "new");
    const stdx::u16string inVictim = U16(scratch / "victim/"), afterOther = U16(scratch / "other");
    FileHandle handle = 0;
    std::uint32_t size = 0;
    FindData find;
    stdx::u16string made;
    const std::pair<const char*, std::function<bool(const stdx::u16string&)>> operations[] = {
        {"OpenFile",
         [&](const stdx::u16string& tail) {
             return FileSystem::OpenFile(afterOther + tail, kGenericWrite, 0, kTruncateExisting,
                                         handle) == kInvalidParameter &&
                    handle == kNoHandle && FileSystem::GetLastError() == kInvalidParameter;
         }},
        {"CreateDirectory",
         [&](auto& tail) { return FileSystem::CreateDirectory(inVictim + tail) == kFileNotFound; }},
        {"MoveFile from",
         [&](auto& tail) {
             return FileSystem::MoveFile(inVictim + tail, U16(scratch / "moved")) == kFileNotFound;
         }},
        {"MoveFile to",
         [&](auto& tail) {
             return FileSystem::MoveFile(U16(scratch / "new"), afterOther + tail) == kFileNotFound;
         }},
        {"GetFileSize",
         [&](auto& tail) {
             return FileSystem::GetFileSize(afterOther + tail, &size) == kSizeQueryFailed;
         }},
        {"CreateTempFile in",
         [&](auto& tail) {
             return FileSystem::CreateTempFile(inVictim + tail, u"edf", made) == kCannotWrite;
         }},
        {"CreateTempFile prefix",
         [&](auto& tail) {
             return FileSystem::CreateTempFile(inVictim, tail, made) == kCannotWrite;
         }},
        {"FindFirst", [&](auto& tail) { return !FileSystem::FindFirst(find, afterOther + tail); }},
        {"DeleteDirectory",
         [&](auto& tail) { return FileSystem::DeleteDirectory(inVictim + tail) == kOk; }},
        {"DeleteFile",
         [&](auto& tail) { return FileSystem::DeleteFile(afterOther + tail) == kOk; }},
    };
    const stdx::u16string tails[] = {u"\U0001F600-backup", stdx::u16string(1, char16_t{0xD800}),
                                     stdx::u16string(u"\0-backup", 8)};
    for (const stdx::u16string& tail : tails) {
        for (const auto& [name, refuses] : operations) {
            // OpenFile takes its path up to the first zero unit, by design.
            if (tail[0] == u'\0' && name == std::string("OpenFile")) continue;
            EXPECT_TRUE(refuses(tail)) << name << " " << tail.size();
            EXPECT_EQ((Names{"new", "other", "victim"}), EntriesOf(scratch.path())) << name;
            EXPECT_EQ(Names{"keep"}, EntriesOf(scratch / "victim")) << name;
            EXPECT_EQ("other", ReadText(scratch / "other")) << name;
        }
    }
}
