#include <string>
#include <utility>
#include <vector>

#include "config/launcher_config_file.h"
#include "config_test_support.h"

namespace config {
namespace {

using configtest::read_bytes;
using configtest::u16;
using configtest::write_bytes;

class LauncherFileFormat : public configtest::TempHome {
  protected:
    // The bytes that a read of `input` followed by a rewrite puts on disk.
    std::string rewrite(const std::string& input) {
        write_bytes(home_ + "/in.cfg", input);
        LauncherConfigStore store;
        EXPECT_TRUE(read_config_file(u16(home_ + "/in.cfg"), store));
        write_config_file(u16(home_ + "/out.cfg"), store);
        return read_bytes(home_ + "/out.cfg");
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

TEST_F(LauncherFileFormat, ByteOrderMarkProbeAnswersTrueOnlyForOtherFiles) {
    write_bytes(home_ + "/le", std::string("\xFF\xFEk\0", 4));
    write_bytes(home_ + "/text", "k=v\n");
    EXPECT_FALSE(file_starts_with_utf16_bom(u16(home_ + "/le")));
    EXPECT_TRUE(file_starts_with_utf16_bom(u16(home_ + "/text")));
    EXPECT_FALSE(file_starts_with_utf16_bom(u16(home_ + "/missing")));
}

// Converted, such a path would lose its tail and name the planted file instead.
TEST_F(LauncherFileFormat, PathThatDoesNotConvertWholeIsNeverOpened) {
    write_bytes(home_ + "/in.cfg", "k=v\n");
    LauncherConfigStore full;
    full.insert(u"a", u"b");
    for (const stdx::u16string& tail :
         {stdx::u16string(u"\U0001F600"), stdx::u16string(1, char16_t{0xDC00})}) {
        const stdx::u16string path = u16(home_ + "/in.cfg") + tail;
        LauncherConfigStore store;
        EXPECT_TRUE(read_config_file(path, store));
        EXPECT_TRUE(store.entries().empty());
        EXPECT_FALSE(file_starts_with_utf16_bom(path));
        int thrown = 0;
        try {
            write_config_file(path, full);
        } catch (int code) {
            thrown = code;
        }
        EXPECT_EQ(thrown, kConfigCannotOpen);
    }
    EXPECT_EQ(read_bytes(home_ + "/in.cfg"), "k=v\n");
    EXPECT_EQ(configtest::names_in(home_), std::set<std::string>{"in.cfg"});
}

}  // namespace
}  // namespace config
