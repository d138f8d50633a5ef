#include "text/encoding.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tests/text/text_printing.h"

namespace {

using stdx::from_multibyte;
using stdx::mbstring;
using stdx::to_multibyte;
using stdx::u16string;

// Sets the locale variables for one test and restores them afterwards, so the
// tests do not depend on the environment they run in.
class EncodingTest : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : kNames) {
            const char* value = std::getenv(name);
            saved_.push_back(value != nullptr ? std::string(1, '=') + value : std::string());
            unsetenv(name);
        }
        use_lang("C.UTF-8");
    }
    void TearDown() override {
        for (std::size_t i = 0; i < saved_.size(); ++i) {
            if (saved_[i].empty()) {
                unsetenv(kNames[i]);
            } else {
                setenv(kNames[i], saved_[i].c_str() + 1, 1);
            }
        }
    }
    static void use_lang(const char* value) { setenv("LANG", value, 1); }

    static constexpr const char* kNames[] = {"LC_ALL", "LC_CTYPE", "LANG"};
    std::vector<std::string> saved_;
};

const u16string kNonAscii(u"Gr\u00F6\u00DFe/\u041F\u0440\u0438\u0432\u0435\u0442/\u65E5\u672C");
const mbstring kNonAsciiUtf8(
    "Gr\xC3\xB6\xC3\x9F"
    "e/\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82/\xE6\x97\xA5\xE6\x9C\xAC");

TEST_F(EncodingTest, NonAsciiTextRoundTripsThroughUtf8) {
    EXPECT_EQ(to_multibyte(kNonAscii), kNonAsciiUtf8);
    EXPECT_EQ(from_multibyte(kNonAsciiUtf8), kNonAscii);
    EXPECT_TRUE(to_multibyte(u16string()).empty());
    EXPECT_TRUE(from_multibyte(mbstring()).empty());
}

TEST_F(EncodingTest, CharactersAboveTheBasicPlaneKeepTheirLow16Bits) {
    EXPECT_EQ(from_multibyte(mbstring("a\xF0\x9F\x98\x80z")), u"a\xF600z");
    char16_t out[4] = {};
    EXPECT_EQ(stdx::multibyte_to_utf16("\xF0\x9F\x98\x80", 4, out, 4), 1);
    EXPECT_EQ(out[0], char16_t(0xF600));
    // U+10000 keeps 0x0000, which ends the zero-terminated result.
    EXPECT_EQ(from_multibyte(mbstring("a\xF0\x90\x80\x80z")), u"a");
}

TEST_F(EncodingTest, UnconvertibleUnitsEndTheMultibyteText) {
    const char16_t unpaired[] = {u'a', u'b', 0xD800, u'c', 0};
    EXPECT_EQ(to_multibyte(u16string(unpaired)), "ab");
    EXPECT_EQ(to_multibyte(u16string(u"x\U0001F600y")), "x");  // a pair is two lone halves

    char out[8];
    std::memset(out, 'q', sizeof out);
    EXPECT_EQ(stdx::utf16_to_multibyte(unpaired, 4, out, sizeof out), -1);
    EXPECT_EQ(std::string(out, sizeof out), std::string("ab\0\0\0\0\0\0", 8));
}

TEST_F(EncodingTest, InvalidOrCutOffUtf8GivesTheEmptyString) {
    for (const char* bad : {"\xC3\x28", "ok\xFF", "abc\xE2\x82", "\xED\xA0\x80"}) {
        EXPECT_TRUE(from_multibyte(mbstring(bad)).empty()) << bad;
    }
    char16_t out[3] = {u'k', u'e', u'p'};
    EXPECT_EQ(stdx::multibyte_to_utf16("ab\xC3", 3, out, 3), -1);
    EXPECT_EQ(u16string(out, 3), u"kep");
    // The byte limit cuts "é" in half: invalid, as before a terminating zero.
    EXPECT_EQ(stdx::multibyte_to_utf16("a\xC3\xA9", 2, out, 3), -1);
}

TEST_F(EncodingTest, ArrayFormsMeasureAndFillOnlyWhatFits) {
    const char16_t text[] = {u'a', 0x00E9, u'b', u'c', 0};
    EXPECT_EQ(stdx::utf16_to_multibyte(text, 4, nullptr, 0), 5);
    EXPECT_EQ(stdx::utf16_to_multibyte(text, 3, nullptr, 0), 4);
    char small[3];
    std::memset(small, 'q', sizeof small);
    // "é" does not fit whole after "a": the rest of the area stays zero.
    EXPECT_EQ(stdx::utf16_to_multibyte(text, 4, small, 2), 5);
    EXPECT_EQ(std::string(small, 3), std::string("a\0q", 3));
    char untouched[2] = {'q', 'q'};
    EXPECT_EQ(stdx::utf16_to_multibyte(text, 0, untouched, 2), 0);
    EXPECT_EQ(untouched[0], 'q');

    char16_t out[4] = {u'-', u'-', u'-', u'-'};
    EXPECT_EQ(stdx::multibyte_to_utf16("a\xC3\xA9z", 4, out, 2), 3);
    EXPECT_EQ(u16string(out, 4), u"a\u00E9--");
    EXPECT_EQ(stdx::multibyte_to_utf16("abcdef", 3, nullptr, 0), 3);
    EXPECT_EQ(stdx::multibyte_to_utf16("ab\0cd", 5, out, 4), 2);
}

TEST_F(EncodingTest, CompareNoCaseFoldsAsciiLettersOnly) {
    EXPECT_EQ(
        stdx::compare_no_case(u"ConfigurationTemplatesLocation", u"CONFIGURATIONTEMPLATESLOCATION"),
        0);
    EXPECT_LT(stdx::compare_no_case(u"apple", u"Banana"), 0);
    EXPECT_GT(stdx::compare_no_case(u"ZED", u"alpha"), 0);
    EXPECT_LT(stdx::compare_no_case(u"key", u"KEYS"), 0);
    EXPECT_NE(stdx::compare_no_case(u"\u00C4", u"\u00E4"), 0);
}

TEST_F(EncodingTest, UninstalledLocaleStillConvertsUtf8) {
    for (const char* missing : {"de_DE.UTF-8", "xx_YY.UTF-8"}) {
        use_lang(missing);
        EXPECT_EQ(to_multibyte(kNonAscii), kNonAsciiUtf8) << missing;
        EXPECT_EQ(from_multibyte(kNonAsciiUtf8), kNonAscii) << missing;
    }
    setenv("LC_ALL", "zz_ZZ.UTF-8", 1);
    EXPECT_EQ(from_multibyte(kNonAsciiUtf8), kNonAscii);
}

TEST_F(EncodingTest, LocaleFollowsTheEnvironmentAtEachCall) {
    const mbstring e_acute("\xC3\xA9");
    EXPECT_EQ(from_multibyte(e_acute), u"\u00E9");
    use_lang("C");
    EXPECT_NE(from_multibyte(e_acute), u"\u00E9");
    use_lang("C.UTF-8");
    EXPECT_EQ(from_multibyte(e_acute), u"\u00E9");
    setenv("LC_CTYPE", "C", 1);
    EXPECT_NE(from_multibyte(e_acute), u"\u00E9");
}

TEST_F(EncodingTest, ConversionsLeaveProcessAndThreadLocalesAsTheyWere) {
    const std::string global_before = setlocale(LC_ALL, nullptr);
    locale_t mine = newlocale(LC_ALL_MASK, "C", locale_t(0));
    ASSERT_NE(mine, locale_t(0));
    const locale_t previous = uselocale(mine);
    EXPECT_EQ(from_multibyte(kNonAsciiUtf8), kNonAscii);
    EXPECT_EQ(to_multibyte(kNonAscii), kNonAsciiUtf8);
    EXPECT_EQ(uselocale(locale_t(0)), mine);
    uselocale(previous);
    freelocale(mine);
    EXPECT_EQ(setlocale(LC_ALL, nullptr), global_before);
}

}  // namespace
