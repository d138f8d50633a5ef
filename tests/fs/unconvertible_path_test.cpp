#include <functional>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// The conversion stops at the first unit it cannot convert, so each of these paths
// would otherwise reach the planted entry it starts with, or the folder holding it.
TEST(UnconvertiblePath, EveryPathOperationRefusesItAndTouchesNothing) {
    ScratchDirectory scratch;
    const stdx::u16string victim = U16(scratch / "victim/"), other = U16(scratch / "other");
    const stdx::u16string moved = U16(scratch / "moved"), fresh = U16(scratch / "new");
    FileHandle handle = 0;
    std::uint32_t size = 0;
    FindData find;
    stdx::u16string made;
    using Path = const stdx::u16string&;
    using Fs = FileSystem;
    const std::function<bool(Path)> refusals[] = {
        [&](Path tail) { return !Fs::FindFirst(find, other + tail); },
        [&](Path tail) { return Fs::CreateDirectory(victim + tail) == kFileNotFound; },
        [&](Path tail) { return Fs::MoveFile(victim + tail, moved) == kFileNotFound; },
        [&](Path tail) { return Fs::MoveFile(fresh, other + tail) == kFileNotFound; },
        [&](Path tail) { return Fs::GetFileSize(other + tail, &size) == kSizeQueryFailed; },
        [&](Path tail) { return Fs::CreateTempFile(victim + tail, u"e", made) == kCannotWrite; },
        [&](Path tail) { return Fs::CreateTempFile(victim, tail, made) == kCannotWrite; },
        [&](Path tail) { return Fs::DeleteDirectory(victim + tail) == kOk; },
        [&](Path tail) { return Fs::DeleteFile(other + tail) == kOk; },
        [&](Path tail) {
            return Fs::OpenFile(other + tail, kGenericWrite, 0, kTruncateExisting, handle) ==
                   kInvalidParameter;
        },
    };
    const stdx::u16string tails[] = {u"\U0001F600-backup", stdx::u16string(1, char16_t{0xD800}),
                                     stdx::u16string(u"\0-backup", 8)};
    for (const stdx::u16string& tail : tails) {
        // OpenFile, last, takes its path up to the first zero unit by design.
        for (std::size_t i = 0; i < std::size(refusals) - (tail[0] == u'\0'); ++i) {
            WriteText(scratch / "victim/keep", "kept");
            WriteText(scratch / "other", "other");
            WriteText(scratch / "new", "new");
            EXPECT_TRUE(refusals[i](tail)) << "operation " << i << ", tail of " << tail.size();
            EXPECT_EQ((Names{"new", "other", "victim"}), EntriesOf(scratch.path())) << i;
            EXPECT_EQ(Names{"keep"}, EntriesOf(scratch / "victim")) << i;
            EXPECT_EQ("other", ReadText(scratch / "other")) << i;
        }
    }
}
