#include "app/string_catalogue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace {

// clang-format off
const std::set<std::string> kAllKeys = {
    "IDS_WIZARD_BACK", "IDS_WIZARD_NEXT", "IDS_WIZARD_FINISH", "IDS_WIZARD_CANCEL",
    "IDS_ACCEPT_CANCEL", "IDS_TITLE_INSTALLER", "IDS_PREPARECOPY", "IDS_INSTALL_ERROR",
    "IDS_ERROR_NOSOURCE", "IDS_ERROR_NOTARGET", "IDS_ERROR_NOSPACE", "IDS_CHOOSEDIR_FOLDER",
    "IDS_CHOOSEDIR_TITLE", "IDR_MAINFRAME", "IDS_SETUP_EMPTYTARGET", "IDS_INSTALL_FINISH",
    "IDS_ERROR_DAMAGEDSOURCE", "IDS_DEFPRODUCT", "IDS_DEFPROVIDER", "IDS_SUCCESS_FINISH",
    "IDS_SUCCESS_OPENDESCR", "IDS_PROGRESS_START", "IDS_ERROR_FINISH", "IDS_CANCEL_FINISH",
    "IDS_BROWSE_SELDIR", "IDS_BROWSE_OK", "IDS_BROWSE_CANCEL", "IDS_WELCOME_TITLE",
    "IDS_SETUP_EXISTEDTARGET", "IDS_DESTINATION_PROMPT", "IDS_TEMPLATE_CATALOG"};
// By code: the id, and letters of which at least one must occur in the language's texts.
const std::map<std::string, std::pair<std::int32_t, const char16_t*>> kLanguages = {
    {"ru", {1, u"ыэ"}}, {"uk", {2, u"їієґ"}}, {"en", {3, u""}}, {"lv", {4, u"āēīūņļķģ"}},
    {"lt", {5, u"ąęėįųū"}}, {"bg", {6, u"ъ"}}, {"de", {7, u"äöüß"}}, {"ro", {8, u"șțăâî"}},
    {"ka", {9, u"აეი"}}, {"kk", {10, u"әғқңөұүһ"}}, {"vi", {11, u"đơưạả"}}, {"tr", {12, u"ığş"}},
    {"el", {13, u"αεο"}}, {"es", {14, u"ñ¿áéíóú"}}, {"hy", {15, u"աեո"}}, {"it", {16, u"èàòù"}}};
// clang-format on

using Text = stdx::u16string;

bool Contains(const Text& text, const char16_t* part) { return text.find(part) != Text::npos; }

bool EndsWith(const Text& text, const Text& tail) {
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

class StringCatalogue : public ::testing::Test {
  protected:
    // Every test leaves the default behind, so any other value is the start-up value.
    void SetUp() override { EXPECT_EQ(CurrentLanguage(), kDefaultLanguageId); }
    void TearDown() override { SetLanguage(kDefaultLanguageId); }
};

// Every language has every key with a trimmed text in its own alphabet, keeps the
// English text's names, markers and ending, and is what a lookup returns once current.
TEST_F(StringCatalogue, EveryLanguageIsCompleteInItsOwnAlphabetWithTheEnglishMarkers) {
    ASSERT_EQ(CatalogueLanguages().size(), 16u);
    const auto& english = CatalogueLanguages().at(kDefaultLanguageId).texts;
    for (const auto& [key, text] : english)
        for (char16_t unit : text) EXPECT_LT(unit, 0x80) << key;
    for (const auto& [id, language] : CatalogueLanguages()) {
        SCOPED_TRACE(language.code);
        const auto& [expectedId, letters] = kLanguages.at(language.code);
        EXPECT_EQ(id, expectedId);
        EXPECT_EQ(FindLanguage(language.code), id);
        const auto& t = language.texts;
        std::set<std::string> keys;
        bool hasLetter = *letters == 0;
        int sameAsEnglish = 0;
        SetLanguage(id);
        for (const auto& [key, text] : t) {
            keys.insert(key);
            ASSERT_FALSE(text.empty()) << key;
            EXPECT_TRUE(text[0] != u' ' && text.back() != u' ') << key;
            EXPECT_EQ(LoadString(key), text) << key;
            for (const char16_t* letter = letters; *letter != 0; ++letter)
                hasLetter = hasLetter || text.find(*letter) != Text::npos;
            sameAsEnglish += text == english.at(key) ? 1 : 0;
            // The welcome title may lead into the product name that follows it with a colon.
            for (const char16_t* tail : {u"...", u":"}) {
                if (key == "IDS_WELCOME_TITLE" && tail[0] == u':') continue;
                EXPECT_EQ(EndsWith(text, tail), EndsWith(english.at(key), tail)) << key;
            }
        }
        EXPECT_EQ(keys, kAllKeys);
        EXPECT_TRUE(hasLetter);
        EXPECT_LE(sameAsEnglish, id == kDefaultLanguageId ? 31 : 1);  // "Folder" may be shared
        EXPECT_EQ(t.at("IDR_MAINFRAME"), t.at("IDS_TITLE_INSTALLER"));
        EXPECT_EQ(t.at("IDS_BROWSE_CANCEL"), t.at("IDS_WIZARD_CANCEL"));
        EXPECT_TRUE(Contains(t.at("IDS_ERROR_NOSOURCE"), u"ord8.dkz"));
        EXPECT_TRUE(Contains(t.at("IDS_ERROR_DAMAGEDSOURCE"), u"ord8.dkz"));
        EXPECT_TRUE(Contains(t.at("IDS_ERROR_NOSPACE"), u"Temp"));
        // One accelerator mark, in front of a letter.
        const Text& folder = t.at("IDS_CHOOSEDIR_FOLDER");
        const std::size_t amp = folder.find(u'&');
        ASSERT_NE(amp, Text::npos);
        EXPECT_EQ(folder.find(u'&', amp + 1), Text::npos);
        EXPECT_NE(folder[amp + 1], u':');
        EXPECT_EQ(t.at("IDS_WIZARD_BACK").substr(0, 2), Text(u"< "));
        EXPECT_TRUE(EndsWith(t.at("IDS_WIZARD_NEXT"), u" >"));
        for (const char* key : {"IDS_DEFPRODUCT", "IDS_DEFPROVIDER"})
            EXPECT_TRUE(t.at(key)[0] == u'<' && t.at(key).back() == u'>') << key;
    }
}

// Lookups give the current language's exact text, and only for exact codes and keys.
TEST_F(StringCatalogue, LookupsReturnTheCurrentLanguagesExactTextForExactCodesAndKeys) {
    EXPECT_EQ(LoadString("IDR_MAINFRAME"), Text(u"Installing configuration"));
    EXPECT_EQ(LoadString("IDS_CHOOSEDIR_FOLDER"), Text(u"&Folder:"));
    EXPECT_EQ(LoadString("IDS_ERROR_DAMAGEDSOURCE"),
              Text(u"Distribution kit file ord8.dkz corrupted or not designed for this "
                   u"installation program."));
    SetLanguage(1);
    EXPECT_EQ(CurrentLanguage(), 1);
    EXPECT_EQ(LoadString("IDS_INSTALL_ERROR"), Text(u"Ошибка при инсталляции"));
    EXPECT_EQ(LoadString("IDS_BROWSE_CANCEL"), Text(u"Отмена"));
    EXPECT_EQ(CatalogueLanguages().at(2).texts.at("IDS_DEFPRODUCT"), Text(u"<Продукт>"));
    for (const char* unknown : {"EN", "", "e", "eng", "en ", "xx"})
        EXPECT_EQ(FindLanguage(unknown), 0) << '"' << unknown << '"';
    EXPECT_EQ(FindLanguage(std::string("en\0", 3)), 0);
    for (const char* key : {"IDS_NO_SUCH_KEY", "", "ids_wizard_back", "IDS_WIZARD_BACK "})
        EXPECT_TRUE(LoadString(key).empty()) << key;
    for (std::int32_t id : {0, 17, -1}) {
        SetLanguage(id);
        EXPECT_TRUE(LoadString("IDR_MAINFRAME").empty()) << id;
    }
}

TEST_F(StringCatalogue, ConcurrentLookupsAlwaysSeeACompleteText) {
    const Text english = CatalogueLanguages().at(3).texts.at("IDS_PREPARECOPY");
    const Text german = CatalogueLanguages().at(7).texts.at("IDS_PREPARECOPY");
    std::atomic<int> wrong{0};
    std::vector<std::thread> readers;
    for (int r = 0; r < 4; ++r) {
        readers.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                const Text text = LoadString("IDS_PREPARECOPY");
                if (text != english && text != german) ++wrong;
            }
        });
    }
    for (int i = 0; i < 2000; ++i) SetLanguage(i % 2 == 0 ? 7 : 3);
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(wrong.load(), 0);
}

}  // namespace
