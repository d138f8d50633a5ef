// These two run commands on purpose: that is what callers use them for.
#include "fs/file_system.h"
#include "tests/support/test_support.h"

TEST(Commands, OutputIsTheFirstLineLessItsLastCharacter) {
    EXPECT_EQ(u"first", FileSystem::RunCommandOutput(u"printf 'first\\nsecond\\n'"));
    EXPECT_EQ(u"ab", FileSystem::RunCommandOutput(u"printf abc"));
    EXPECT_EQ(u"", FileSystem::RunCommandOutput(u"true"));
    // One read of at most 254 characters; the cut line still loses its last one.
    EXPECT_EQ(stdx::u16string(253, u'0'), FileSystem::RunCommandOutput(u"printf '%0300d\\n' 0"));
    ScratchDirectory scratch;
    FileSystem::RunCommand(U16("echo ran > '" + scratch / "out" + "'"));
    EXPECT_EQ("ran\n", ReadText(scratch / "out"));
}
