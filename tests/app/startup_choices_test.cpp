#include "app/startup_choices.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "app/string_catalogue.h"
#include "tests/support/test_support.h"

namespace {

using Text = stdx::u16string;

// Runs ChooseStartup on "installer" followed by `args` split at spaces.
StartupChoices Choose(const std::string& args, const std::string& locale, const char* lang) {
    std::vector<std::string> words{"installer"};
    std::istringstream split(args);
    for (std::string word; split >> word;) words.push_back(word);
    std::vector<const char*> argv;
    for (const std::string& word : words) argv.push_back(word.c_str());
    argv.push_back(nullptr);
    return ChooseStartup(int(argv.size()) - 1, argv.data(), locale, lang);
}

TEST(StartupChoices, FollowTheCommandLineThenTheLocale) {
    struct Case {
        const char *args, *locale, *lang;  // lang: LANG before start-up; nullptr: unset
        bool useCwd, silent;
        std::int32_t id;
        const char16_t* languageName;
        const char* langToSet;  // nullptr: LANG is left alone
    };
    // clang-format off
    const Case cases[] = {
        {"",                  "de_AT", "C",     false, false, 7,  u"de", nullptr},
        {"usecwd /S /Lru",    "en",    "C",     true,  true,  1,  u"ru", nullptr},
        {"usecwdX /S",        "en",    "C",     false, true,  3,  u"en", nullptr},
        {"/Lde usecwd",       "en",    "C",     false, false, 7,  u"de", nullptr},
        {"/S /Lde",           "en",    "C",     false, true,  7,  u"de", nullptr},
        {"/Lde /S",           "en",    "C",     false, false, 7,  u"de", nullptr},
        {"/Lxx /S",           "uk_UA", "C",     false, false, 2,  u"uk", nullptr},
        {"/L",                "it_IT", "C",     false, false, 16, u"it", nullptr},
        {"/LDE",              "fr_FR", "C",     false, false, 3,  u"en", nullptr},
        {"/Ldeu",             "es_ES", "C",     false, false, 14, u"es", nullptr},
        {"-s -lde",           "en",    "C",     false, true,  7,  u"de", nullptr},
        {"/Silent -Lbg",      "en",    "C",     false, true,  6,  u"bg", nullptr},
        {"/X S Lde / - /Lkk", "en",    "C",     false, false, 10, u"kk", nullptr},
        {"",                  "pt_BR", nullptr, false, false, 3,  u"en", "pt_BR.UTF-8"},
        {"",                  "hy_AM", "",      false, false, 15, u"hy", "hy_AM.UTF-8"},
        {"",                  "haw",   nullptr, false, false, 3,  u"en", "haw.UTF-8"},
        {"",                  "hye",   "C",     false, false, 15, u"hy", nullptr},
        {"",                  "e",     "C",     false, false, 3,  u"en", nullptr},
        {"/Lvi",              "tr_TR", nullptr, false, false, 11, u"vi", nullptr},
        {"/Lzz",              "tr_TR", nullptr, false, false, 12, u"tr", "tr_TR.UTF-8"},
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
    const char* const noArguments[] = {nullptr};
    EXPECT_EQ(ChooseStartup(0, noArguments, "lt_LT", "C").languageId, 5);
}

TEST(ApplyStartupChoices, SetsLangOnlyWhenAskedAndReturnsTheChosenTitle) {
    const ScopedEnvironment lang("LANG", std::nullopt);
    const auto title = [](std::int32_t id) {
        return CatalogueLanguages().at(id).texts.at("IDS_TITLE_INSTALLER");
    };
    EXPECT_EQ(ApplyStartupChoices(Choose("/Lxx", "bg_BG", nullptr)), title(6));
    EXPECT_STREQ(std::getenv("LANG"), "bg_BG.UTF-8");
    EXPECT_EQ(CurrentLanguage(), 6);
    EXPECT_EQ(ApplyStartupChoices(Choose("/Lel", "de_DE", "C")), title(13));
    EXPECT_STREQ(std::getenv("LANG"), "bg_BG.UTF-8");
    SetLanguage(kDefaultLanguageId);
}

}  // namespace
