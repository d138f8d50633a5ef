#include "wizard/finishing.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tests/kit/kit_test_support.h"
#include "wizard/message_box.h"

namespace {

config::ProductInfo Product(const char16_t* language, const char16_t* description) {
    return {language, u"P", u"V", description};
}

TEST(DescriptionFileName, FirstRecordOfTheLanguageElseEnglish) {
    const std::vector<config::ProductInfo> products = {
        Product(u"ru", u""), Product(u"de", u"de.html"), Product(u"ru", u"ru-later.html"),
        Product(u"EN", u"en.html"), Product(u"en", u"en-later.html")};
    const struct {
        const char16_t* language;
        const char16_t* expected;
    } cases[] = {
        {u"DE", u"de.html"},  // case ignored
        {u"ru", u"en.html"},  // the first ru record is empty: English, not the later ru
        {u"ka", u"en.html"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(stdx::u16string(c.expected), description_file_name(products, c.language))
            << Utf8(c.language);
    EXPECT_EQ(stdx::u16string(), description_file_name({Product(u"de", u"x")}, u"ru"));
}

// Only a regular file the kit itself installed is handed to the viewer.
TEST(DescriptionToOpen, OnlyTheKitsOwnRegularFile) {
    kittest::KitScratch scratch;
    const std::string target = scratch.root / "t/";
    std::filesystem::create_directories(target + "docs");
    WriteText(target + "docs/d.html", "d");
    WriteText(target + "other.html", "o");
    std::filesystem::create_symlink(target + "docs/d.html", target + "link.html");
    const std::string kit = kittest::BuildKit(
        {u"en"}, {{u"docs\\d.html", "d"}, {u"link.html", "l"}, {u"gone.html", "g"}});
    WriteText(scratch.kit, kittest::Deflate(kit));
    InstallData<LZCompressor, FileSystem> data;
    ASSERT_EQ(kOk, data.Load(U16(scratch.kit)));
    const struct {
        const char16_t* description;
        bool opened;
    } cases[] = {{u"docs\\d.html", true}, {u"docs/d.html", true},
                 {u"other.html", false},  {u"link.html", false},
                 {u"gone.html", false},   {u"../t/docs/d.html", false},
                 {u"/etc/passwd", false}, {u"", false}};
    for (const auto& c : cases) {
        data.products = {Product(u"en", c.description)};
        const auto path = DescriptionToOpen(data, U16(target), u"en");
        EXPECT_EQ(c.opened, path.has_value()) << Utf8(c.description);
        if (path) {
            EXPECT_EQ(target + "docs/d.html", std::string(path->c_str()));
        }
    }
    data.Close();
}

// The viewer gets the path as its one argument, runs on after the installer's call has
// returned, and no shell ever sees the name.
TEST(OpenDocument, StartsTheOpenerDetachedWithOneArgument) {
    ScratchDirectory scratch;
    const std::string bin = scratch / "bin", record = scratch / "record";
    std::filesystem::create_directories(bin);
    WriteText(bin + "/xdg-open",
              "#!/bin/sh\nsleep 2\nprintf '%s|' \"$#\" \"$@\" > " + record + "\n");
    chmod((bin + "/xdg-open").c_str(), 0755);
    ScopedEnvironment path{"PATH", bin + ":/usr/bin:/bin"};
    const std::string document = scratch / (kHostile + " \"quoted\".html");
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(OpenDocument(document.c_str()));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ("", ReadText(record));
    for (int i = 0; i < 100 && ReadText(record).empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ("1|" + document + "|", ReadText(record));

    ScopedEnvironment nowhere{"PATH", scratch / "empty"};
    EXPECT_FALSE(OpenDocument(document.c_str()));
}

}  // namespace
