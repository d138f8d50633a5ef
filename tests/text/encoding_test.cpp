#include "text/encoding.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <cstdlib>
#include <string>

namespace {

using stdx::from_multibyte;
using stdx::mbstring;
using stdx::to_multibyte;
using stdx::u16string;

const u16string kText(u"Gr\u00F6\u00DFe/\u041F\u0440\u0438\u0432\u0435\u0442/\u65E5\u672C");
const mbstring kUtf8(
    "Gr\xC3\xB6\xC3\x9F"
    "e/\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82/\xE6\x97\xA5\xE6\x9C\xAC");

// Each test starts from a UTF-8 environment, whatever the one it runs in.
class Encoding : public ::testing::Test {
  protected:
    void SetUp() override {
        unsetenv("LC_ALL");
        unsetenv("LC_CTYPE");
        setenv("LANG", "C.UTF-8", 1);
    }
};

TEST_F(Encoding, ConvertsBothWaysKeepingLow16BitsAndStoppingAtSurrogates) {
    EXPECT_EQ(from_multibyte(kUtf8), kText);
    EXPECT_EQ(to_multibyte(kText), kUtf8);
    EXPECT_EQ(to_multibyte(u16string(u"x\U0001F600y")), "x");  // a pair is two lone halves
    EXPECT_EQ(from_multibyte(mbstring("a\xF0\x9F\x98\x80z")), u"a\xF600z");
    EXPECT_EQ(from_multibyte(mbstring("a\xF0\x90\x80\x80z")), u"a");  // U+10000 keeps 0
    for (const char* bad : {"\xC3\x28", "ok\xFF", "abc\xE2\x82", "\xED\xA0\x80"})
        EXPECT_TRUE(from_multibyte(mbstring(bad)).empty()) << bad;
}

TEST_F(Encoding, ArrayFormsMeasureAndFillOnlyWhatFits) {
    const char16_t text[] = {u'a', 0x00E9, u'b', u'c', 0};
    EXPECT_EQ(stdx::utf16_to_multibyte(text, 3, nullptr, 0), 4);
    char small[3] = {'q', 'q', 'q'};
    EXPECT_EQ(stdx::utf16_to_multibyte(text, 4, small, 2), 5);
    EXPECT_EQ(std::string(small, 3), std::string("a\0q", 3));  // no half of "é"
    const char16_t unpaired[] = {u'a', u'b', 0xD800, u'c', 0};
    char out6[6] = {'q', 'q', 'q', 'q', 'q', 'q'};
    EXPECT_EQ(stdx::utf16_to_multibyte(unpaired, 4, out6, sizeof out6), -1);
    EXPECT_EQ(std::string(out6, 6), std::string("ab\0\0\0\0", 6));  // zeroed, then filled

    char16_t out[4] = {u'-', u'-', u'-', u'-'};
    EXPECT_EQ(stdx::multibyte_to_utf16("a\xC3\xA9z", 4, out, 2), 3);
    EXPECT_EQ(u16string(out, 4), u"a\u00E9--");
    EXPECT_EQ(stdx::multibyte_to_utf16("ab\xC3", 3, out, 4), -1);
    EXPECT_EQ(u16string(out, 4), u"a\u00E9--");
    EXPECT_EQ(stdx::multibyte_to_utf16("a\xC3\xA9", 2, out, 4), -1);  // the limit cuts "é"
    EXPECT_EQ(stdx::multibyte_to_utf16("ab\0cd", 5, nullptr, 0), 2);
}

TEST_F(Encoding, CompareNoCaseFoldsAsciiLettersOnly) {
    EXPECT_EQ(stdx::compare_no_case(u"TemplatesLocation", u"TEMPLATESLOCATION"), 0);
    EXPECT_LT(stdx::compare_no_case(u"KEY", u"keys"), 0);
    EXPECT_NE(stdx::compare_no_case(u"\u00C4", u"\u00E4"), 0);
}

TEST_F(Encoding, EachCallFollowsTheEnvironmentAndLeavesEveryLocaleAsItWas) {
    setenv("LANG", "C", 1);
    EXPECT_NE(from_multibyte(mbstring("\xC3\xA9")), u"\u00E9");
    setenv("LANG", "de_DE.UTF-8", 1);  // not installed on every machine
    EXPECT_EQ(from_multibyte(kUtf8), kText);
    setenv("LC_ALL", "xx_YY.UTF-8", 1);  // falls back to UTF-8
    EXPECT_EQ(to_multibyte(kText), kUtf8);

    const std::string global_before = setlocale(LC_ALL, nullptr);
    const locale_t mine = newlocale(LC_ALL_MASK, "C", locale_t(0));
    const locale_t previous = uselocale(mine);
    EXPECT_EQ(from_multibyte(kUtf8), kText);
    EXPECT_EQ(uselocale(locale_t(0)), mine);
    uselocale(previous);
    freelocale(mine);
    EXPECT_EQ(setlocale(LC_ALL, nullptr), global_before);
}

}  // namespace
