#include <string>
#include <vector>

#include "config/launcher_config_file.h"
#include "config_test_support.h"
#include "text/encoding.h"

namespace config {
namespace {

using configtest::read_bytes;
using configtest::u16;
using configtest::write_bytes;

class LauncherFileFormat : public configtest::TempHome {
  protected:
    // What a read of `input` followed by a rewrite puts on disk.
    std::string rewrite(const std::string& input) {
        write_bytes(home_ + "/in.cfg", input);
        LauncherConfigStore store;
        EXPECT_TRUE(read_config_file(u16(home_ + "/in.cfg"), store));
        write_config_file(u16(home_ + "/out.cfg"), store);
        return read_bytes(home_ + "/out.cfg");
    }
};

TEST_F(LauncherFileFormat, LinesAreSplitAtTheFirstEqualsSignAndKeptVerbatim) {
    const std::string cyrillic = "\xD0\xBF\xD1\x83\xD1\x82\xD1\x8C";  // a non-ASCII key
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"a=b=c\n", "a=b=c\n"},
        {"=x\n", "=x\n"},
        {"abc\n", "abc=\n"},
        {"=\n\n\nk=v", "k=v\n"},
        {" k = v \n#c\n;d\n[s]\n", " k = v \n#c=\n;d=\n[s]=\n"},
        {"a=1\r\nb=2\r\n", "a=1\r\nb=2\r\n"},
        {cyrillic + "=/Users/\xD1\x8E/t\n", cyrillic + "=/Users/\xD1\x8E/t\n"},
        {"Key=/x\nkEY=/y\nother=1\nKEY=/Y\n", "Key=/x\nKey=/y\nother=1\n"},
        {"k=/Tmp\nk=/tmp\n", "k=/Tmp\n"},
    };
    for (const auto& [input, expected] : cases) EXPECT_EQ(rewrite(input), expected) << input;
}

TEST_F(LauncherFileFormat, LongKeysValuesAndCharactersCutByChunksSurvive) {
    const std::string longLine = std::string(5000, 'k') + "=" + std::string(3000, 'v') + "\n";
    EXPECT_EQ(rewrite(longLine), longLine);
    // A two-byte character across the first 1,024-byte boundary, then a three-byte one.
    const std::string cut = "a=" + std::string(1021, 'x') +
                            "\xD0\xB6\nb=" + std::string(1019, 'y') + "\xE2\x82\xAC\nc=1\n";
    EXPECT_EQ(rewrite(cut), cut);
}

TEST_F(LauncherFileFormat, UndecodableTextYieldsNoSetting) {
    const std::string utf16 = std::string("\xFF\xFEk\0=\0v\0\n\0", 10);
    EXPECT_EQ(rewrite(utf16), "");
    EXPECT_EQ(rewrite("a=\xE9\nb=2\n"), "");  // one bad byte spoils its whole chunk
}

TEST_F(LauncherFileFormat, ByteOrderMarkProbeAnswersTrueOnlyForOtherFiles) {
    const std::vector<std::pair<std::string, bool>> cases = {
        {std::string("\xFF\xFEk\0", 4), false}, {"k=v\n", true}, {"k", false}, {"", false}};
    for (const auto& [bytes, expected] : cases) {
        write_bytes(home_ + "/probe", bytes);
        EXPECT_EQ(file_starts_with_utf16_bom(u16(home_ + "/probe")), expected) << bytes;
    }
    EXPECT_FALSE(file_starts_with_utf16_bom(u16(home_ + "/missing")));
}

TEST(LauncherConfigStoreInsert, RefusesAValueAlreadyHeldInAnyCase) {
    LauncherConfigStore store;
    EXPECT_TRUE(store.insert(u16("Key"), u16("/a")));
    EXPECT_TRUE(store.insert(u16("KEY"), u16("/b")));
    EXPECT_FALSE(store.insert(u16("key"), u16("/A")));
    ASSERT_EQ(store.entries().size(), 1u);
    EXPECT_EQ(store.entries()[0].key, u16("Key"));
    EXPECT_EQ(store.entries()[0].values, (std::vector<stdx::u16string>{u16("/a"), u16("/b")}));
}

TEST_F(LauncherFileFormat, MissingFileReadsAsEmptyButAFolderCountsAsUnreadable) {
    LauncherConfigStore store;
    EXPECT_TRUE(read_config_file(u16(home_ + "/missing.cfg"), store));
    EXPECT_TRUE(read_config_file(u16(home_ + "/missing/deeper.cfg"), store));
    EXPECT_FALSE(read_config_file(u16(home_), store));
    EXPECT_TRUE(store.entries().empty());
}

}  // namespace
}  // namespace config
