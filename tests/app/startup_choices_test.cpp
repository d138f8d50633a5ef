#include "app/startup_choices.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "app/string_catalogue.h"

namespace {

using Text = stdx::u16string;

// Runs ChooseStartup on "installer" followed by `args` split at spaces.
StartupChoices Choose(const std::string& args, const std::string& locale, const char* lang) {
    std::vector<std::string> words{"installer"};
    std::istringstream split(args);
    for (std::string word; split >> word;) words.push_back(word);
    std::vector<const char*> argv;
    for (const std::string& word : words) argv.push_back(word.c_str());
    const int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    return ChooseStartup(argc, argv.data(), locale, lang);
}

TEST(StartupChoices, FollowTheCommandLineThenTheLocale) {
    struct Case {
        const char* args;  // split at spaces
        const char* locale;
        const char* lang;  // LANG before start-up; nullptr: unset
        bool useCwd;
        bool silent;
        std::int32_t id;
        const char16_t* languageName;
        const char* langToSet;  // nullptr: LANG is left alone
    };
    // clang-format off
    const Case cases[] = {
        {"",                    "de_AT", "C",     false, false, 7,  u"de", nullptr},
        {"usecwd",              "en_US", "C",     true,  false, 3,  u"en", nullptr},
        {"usecwd /S /Lru",      "en",    "C",     true,  true,  1,  u"ru", nullptr},
        {"usecwdX /S",          "en",    "C",     false, true,  3,  u"en", nullptr},
        {"/Lde usecwd",         "en",    "C",     false, false, 7,  u"de", nullptr},
        {"/S /Lde",             "en",    "C",     false, true,  7,  u"de", nullptr},
        {"/Lde /S",             "en",    "C",     false, false, 7,  u"de", nullptr},
        {"/Lxx /S",             "uk_UA", "C",     false, false, 2,  u"uk", nullptr},
        {"/L",                  "it_IT", "C",     false, false, 16, u"it", nullptr},
        {"/LDE",                "fr_FR", "C",     false, false, 3,  u"en", nullptr},
        {"/Ldeu",               "es_ES", "C",     false, false, 14, u"es", nullptr},
        {"-s -lde",             "en",    "C",     false, true,  7,  u"de", nullptr},
        {"/Silent -Lbg",        "en",    "C",     false, true,  6,  u"bg", nullptr},
        {"/X S Lde / - /Lkk",   "en",    "C",     false, false, 10, u"kk", nullptr},
        {"",                    "pt_BR", nullptr, false, false, 3,  u"en", "pt_BR.UTF-8"},
        {"",                    "uk_UA", "C",     false, false, 2,  u"uk", nullptr},
        {"",                    "hy_AM", "",      false, false, 15, u"hy", "hy_AM.UTF-8"},
        {"",                    "haw",   nullptr, false, false, 3,  u"en", "haw.UTF-8"},
        {"",                    "hye",   "C",     false, false, 15, u"hy", nullptr},
        {"",                    "e",     "C",     false, false, 3,  u"en", nullptr},
        {"/Lvi",                "tr_TR", nullptr, false, false, 11, u"vi", nullptr},
        {"/Lzz",                "tr_TR", nullptr, false, false, 12, u"tr", "tr_TR.UTF-8"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string("args \"") + c.args + "\" locale " + c.locale);
        const StartupChoices choices = Choose(c.args, c.locale, c.lang);
        EXPECT_EQ(choices.useCwd, c.useCwd);
        EXPECT_EQ(choices.silent, c.silent);
        EXPECT_EQ(choices.languageId, c.id);
        EXPECT_EQ(choices.languageName, Text(c.languageName));
        EXPECT_EQ(choices.langToSet.value_or("<none>"), c.langToSet ? c.langToSet : "<none>");
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
    const StartupChoices choices = Choose("/Lxx", "bg_BG", std::getenv("LANG"));
    const Text title = ApplyStartupChoices(choices);
    ASSERT_NE(std::getenv("LANG"), nullptr);
    EXPECT_STREQ(std::getenv("LANG"), "bg_BG.UTF-8");
    EXPECT_EQ(CurrentLanguage(), 6);
    EXPECT_EQ(title, CatalogueLanguages().at(6).texts.at("IDS_TITLE_INSTALLER"));
}

TEST_F(ApplyStartupChoicesTest, LeavesLangAloneWhenNotAsked) {
    setenv("LANG", "C", 1);
    const StartupChoices choices = Choose("/Lel", "de_DE", std::getenv("LANG"));
    const Text title = ApplyStartupChoices(choices);
    EXPECT_STREQ(std::getenv("LANG"), "C");
    EXPECT_EQ(title, CatalogueLanguages().at(13).texts.at("IDS_TITLE_INSTALLER"));
}

}  // namespace
