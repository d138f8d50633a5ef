#include "kit/kit_format.h"

#include <gtest/gtest.h>

#include <string>

namespace {

bool Safe(const std::u16string& name) {
    return kitformat::is_safe_file_name(name.data(), name.size());
}

TEST(KitFormatTest, RelativeNamesThatStayInsideAreSafe) {
    for (const std::u16string name :
         {u"a", u"dir/file.cfg", u"dir\\sub\\file", u"a..b", u"..a", u"a/..b/c", u"a/.../b", u"./a",
          u"a//b", u"1:x", u"ab:c", u"\u0444\u0430\u0439\u043b"}) {
        EXPECT_TRUE(Safe(name)) << std::string(name.begin(), name.end());
    }
}

TEST(KitFormatTest, NamesThatCouldLeaveTheTargetAreUnsafe) {
    for (const std::u16string name : {u"", u"/a", u"\\a", u"C:", u"c:file", u"..", u"../a", u"a/..",
                                      u"a/../b", u"a\\..", u"..\\a", u"a/\\../b"}) {
        EXPECT_FALSE(Safe(name)) << std::string(name.begin(), name.end());
    }
    EXPECT_FALSE(Safe(std::u16string(u"a\0b", 3)));
    EXPECT_FALSE(kitformat::is_safe_file_name(nullptr, 0));
}

}  // namespace
