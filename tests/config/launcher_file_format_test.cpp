#include <string>
#include <utility>
#include <vector>

#include "config/launcher_config_file.h"
#include "tests/support/test_support.h"

namespace config {
namespace {

class LauncherFileFormat : public ::testing::Test {
  protected:
    ScratchDirectory scratch_;
    // The bytes that a read of `input` followed by a rewrite puts on disk.
    std::string rewrite(const std::string& input) {
        WriteText(scratch_ / "in.cfg", input);
        LauncherConfigStore store;
        EXPECT_TRUE(read_config_file(U16(scratch_ / "in.cfg"), store));
        write_config_file(U16(scratch_ / "out.cfg"), store);
        return ReadText(scratch_ / "out.cfg");
    }
};

// Each input is read and written back; the output shows what the reader understood.
TEST_F(LauncherFileFormat, RewriteGivesBackExactlyWhatWasUnderstood) {
    const std::string ru = "\xD0\xBF\xD1\x83\xD1\x82\xD1\x8C";  // a non-ASCII word
    const std::string longLine = std::string(5000, 'k') + "=" + std::string(3000, 'v') + "\n";
    // Characters of two and three bytes that straddle the 1,024-byte chunk boundaries.
    const std::string cut = "a=" + std::string(1021, 'x') +
                            "\xD0\xB6\nb=" + std::string(1019, 'y') + "\xE2\x82\xAC\nc=1\n";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"a=b=c\n=x\nabc\n", "a=b=c\n=x\nabc=\n"},
        {"=\n\n\nk=v", "k=v\n"},
        {" k = v \n#c\n[s]\n", " k = v \n#c=\n[s]=\n"},
        {"a=1\r\nb=2\r\n", "a=1\r\nb=2\r\n"},
        {ru + "=/Users/" + ru + "\n", ru + "=/Users/" + ru + "\n"},
        {"Key=/x\nkEY=/y\nother=1\nKEY=/Y\nkey=/X\n", "Key=/x\nKey=/y\nother=1\n"},
        {longLine, longLine},
        {cut, cut},
        {std::string("\xFF\xFEk\0=\0v\0\n\0", 10), ""},  // UTF-16 with a byte-order mark
        {"a=\xE9\nb=2\n", ""},  // one bad byte spoils its chunk, unless it ends the chunk
        {cut.substr(0, 1023) + "\xE9\nb=2\n", cut.substr(0, 1023) + "\nb=2\n"},
    };
    for (const auto& [input, expected] : cases) EXPECT_EQ(rewrite(input), expected) << input;
}

// A path that does not convert whole would lose its tail and name the planted file.
TEST_F(LauncherFileFormat, ByteOrderProbeAndUnconvertiblePaths) {
    WriteText(scratch_ / "le", std::string("\xFF\xFEk\0", 4));
    WriteText(scratch_ / "in.cfg", "k=v\n");
    // True means "not UTF-16 with a byte-order mark"; a missing file gives false.
    for (const auto& [name, plain] : {std::pair{"le", false}, {"in.cfg", true}, {"missing", false}})
        EXPECT_EQ(file_starts_with_utf16_bom(U16(scratch_ / name)), plain) << name;
    LauncherConfigStore store;
    const stdx::u16string path = U16(scratch_ / "in.cfg") + u"\U0001F600";
    EXPECT_TRUE(read_config_file(path, store));
    EXPECT_TRUE(store.entries().empty());
    try {
        write_config_file(path, store);
        ADD_FAILURE() << "written";
    } catch (int code) {
        EXPECT_EQ(code, kConfigCannotOpen);
    }
    EXPECT_EQ(ReadText(scratch_ / "in.cfg"), "k=v\n");
}

}  // namespace
}  // namespace config
