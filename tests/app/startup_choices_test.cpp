#include "app/startup_choices.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "app/string_catalogue.h"

namespace {

using Text = stdx::u16string;

StartupChoices Choose(const std::vector<const char*>& args, const std::string& locale,
                      const char* lang) {
    std::vector<const char*> argv{"installer"};
    argv.insert(argv.end(), args.begin(), args.end());
    const int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    return ChooseStartup(argc, argv.data(), locale, lang);
}

TEST(StartupChoices, FollowTheCommandLineThenTheLocale) {
    struct Case {
        const char* name;
        std::vector<const char*> args;
        const char* locale;
        const char* lang;  // nullptr: LANG unset
        bool useCwd;
        bool silent;
        std::int32_t id;
        const char16_t* languageName;
        std::optional<std::string> langToSet;
    };
    const std::optional<std::string> kept;
    const Case cases[] = {
        {"no arguments", {}, "de_AT", "C", false, false, 7, u"de", kept},
        {"usecwd", {"usecwd"}, "en_US", "C", true, false, 3, u"en", kept},
        {"usecwd then options", {"usecwd", "/S", "/Lru"}, "en", "C", true, true, 1, u"ru", kept},
        {"usecwdX is an argument", {"usecwdX", "/S"}, "en", "C", false, true, 3, u"en", kept},
        {"usecw is an argument", {"usecw"}, "en", "C", false, false, 3, u"en", kept},
        {"usecwd must come first", {"/Lde", "usecwd"}, "en", "C", false, false, 7, u"de", kept},
        {"silent then language", {"/S", "/Lde"}, "en", "C", false, true, 7, u"de", kept},
        {"language ends the scan", {"/Lde", "/S"}, "en", "C", false, false, 7, u"de", kept},
        {"unknown code ends the scan", {"/Lxx", "/S"}, "uk_UA", "C", false, false, 2, u"uk", kept},
        {"empty code", {"/L"}, "it_IT", "C", false, false, 16, u"it", kept},
        {"codes are case-sensitive", {"/LDE"}, "fr_FR", "C", false, false, 3, u"en", kept},
        {"three-letter code", {"/Ldeu"}, "es_ES", "C", false, false, 14, u"es", kept},
        {"dash and lower case", {"-s", "-lde"}, "en", "C", false, true, 7, u"de", kept},
        {"only the second character counts",
         {"/Silent", "-Lbg"},
         "en",
         "C",
         false,
         true,
         6,
         u"bg",
         kept},
        {"other options and words are ignored",
         {"/X", "S", "Lde", "/", "-", "/Lkk"},
         "en",
         "C",
         false,
         false,
         10,
         u"kk",
         kept},
        {"locale pt_BR with LANG unset",
         {},
         "pt_BR",
         nullptr,
         false,
         false,
         3,
         u"en",
         std::string("pt_BR.UTF-8")},
        {"locale uk_UA with LANG=C", {}, "uk_UA", "C", false, false, 2, u"uk", kept},
        {"empty LANG counts as unset",
         {},
         "hy_AM",
         "",
         false,
         false,
         15,
         u"hy",
         std::string("hy_AM.UTF-8")},
        {"haw is cut to ha, LANG gets it uncut",
         {},
         "haw",
         nullptr,
         false,
         false,
         3,
         u"en",
         std::string("haw.UTF-8")},
        {"two-byte locale kept whole", {}, "ka", "C", false, false, 9, u"ka", kept},
        {"one-byte locale", {}, "e", "C", false, false, 3, u"en", kept},
        {"locale codes are case-sensitive", {}, "EL_GR", "C", false, false, 3, u"en", kept},
        {"command line wins, LANG untouched",
         {"/Lvi"},
         "tr_TR",
         nullptr,
         false,
         false,
         11,
         u"vi",
         kept},
        {"unknown code falls back and sets LANG",
         {"/Lzz"},
         "tr_TR",
         nullptr,
         false,
         false,
         12,
         u"tr",
         std::string("tr_TR.UTF-8")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const StartupChoices choices = Choose(c.args, c.locale, c.lang);
        EXPECT_EQ(choices.useCwd, c.useCwd);
        EXPECT_EQ(choices.silent, c.silent);
        EXPECT_EQ(choices.languageId, c.id);
        EXPECT_EQ(choices.languageName, Text(c.languageName));
        EXPECT_EQ(choices.langToSet, c.langToSet);
    }
}

TEST(StartupChoices, ToleratesAnArgumentVectorWithoutProgramName) {
    const char* const argv[] = {nullptr};
    const StartupChoices choices = ChooseStartup(0, argv, "lt_LT", "C");
    EXPECT_FALSE(choices.useCwd);
    EXPECT_EQ(choices.languageId, 5);
}

// Applying changes process state; put LANG and the catalogue language back afterwards.
class ApplyStartupChoicesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const char* lang = std::getenv("LANG");
        if (lang != nullptr) savedLang_ = lang;
    }
    void TearDown() override {
        if (savedLang_)
            setenv("LANG", savedLang_->c_str(), 1);
        else
            unsetenv("LANG");
        SetLanguage(kDefaultLanguageId);
    }

  private:
    std::optional<std::string> savedLang_;
};

TEST_F(ApplyStartupChoicesTest, SetsLangAndReturnsTheTitleInTheChosenLanguage) {
    unsetenv("LANG");
    const StartupChoices choices = Choose({"/Lxx"}, "bg_BG", std::getenv("LANG"));
    const Text title = ApplyStartupChoices(choices);
    ASSERT_NE(std::getenv("LANG"), nullptr);
    EXPECT_STREQ(std::getenv("LANG"), "bg_BG.UTF-8");
    EXPECT_EQ(CurrentLanguage(), 6);
    EXPECT_EQ(title, CatalogueLanguages().at(6).texts.at("IDS_TITLE_INSTALLER"));
}

TEST_F(ApplyStartupChoicesTest, LeavesLangAloneWhenNotAsked) {
    setenv("LANG", "C", 1);
    const StartupChoices choices = Choose({"/Lel"}, "de_DE", std::getenv("LANG"));
    const Text title = ApplyStartupChoices(choices);
    EXPECT_STREQ(std::getenv("LANG"), "C");
    EXPECT_EQ(title, CatalogueLanguages().at(13).texts.at("IDS_TITLE_INSTALLER"));
}

}  // namespace
