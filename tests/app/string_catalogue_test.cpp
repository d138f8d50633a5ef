#include "app/string_catalogue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

namespace {

const std::set<std::string> kAllKeys = {
    "IDS_WIZARD_BACK",      "IDS_WIZARD_NEXT",         "IDS_WIZARD_FINISH",
    "IDS_WIZARD_CANCEL",    "IDS_ACCEPT_CANCEL",       "IDS_TITLE_INSTALLER",
    "IDS_PREPARECOPY",      "IDS_INSTALL_ERROR",       "IDS_ERROR_NOSOURCE",
    "IDS_ERROR_NOTARGET",   "IDS_ERROR_NOSPACE",       "IDS_CHOOSEDIR_FOLDER",
    "IDS_CHOOSEDIR_TITLE",  "IDR_MAINFRAME",           "IDS_SETUP_EMPTYTARGET",
    "IDS_INSTALL_FINISH",   "IDS_ERROR_DAMAGEDSOURCE", "IDS_DEFPRODUCT",
    "IDS_DEFPROVIDER",      "IDS_SUCCESS_FINISH",      "IDS_SUCCESS_OPENDESCR",
    "IDS_PROGRESS_START",   "IDS_ERROR_FINISH",        "IDS_CANCEL_FINISH",
    "IDS_BROWSE_SELDIR",    "IDS_BROWSE_OK",           "IDS_BROWSE_CANCEL",
    "IDS_WELCOME_TITLE",    "IDS_SETUP_EXISTEDTARGET", "IDS_DESTINATION_PROMPT",
    "IDS_TEMPLATE_CATALOG",
};

using Text = stdx::u16string;

bool Contains(const Text& text, const char16_t* part) { return text.find(part) != Text::npos; }

bool EndsWith(const Text& text, const Text& tail) {
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

const Text& TextOf(std::int32_t id, const std::string& key) {
    return CatalogueLanguages().at(id).texts.at(key);
}

class StringCatalogue : public ::testing::Test {
  protected:
    // Every test leaves the default behind, so any other value is the start-up value.
    void SetUp() override { EXPECT_EQ(CurrentLanguage(), kDefaultLanguageId); }
    void TearDown() override { SetLanguage(kDefaultLanguageId); }
};

TEST_F(StringCatalogue, EveryLanguageHasEveryKeyWithATrimmedNonEmptyText) {
    ASSERT_EQ(CatalogueLanguages().size(), 16u);
    for (const auto& [id, language] : CatalogueLanguages()) {
        SCOPED_TRACE(language.code);
        std::set<std::string> keys;
        for (const auto& [key, text] : language.texts) {
            keys.insert(key);
            ASSERT_FALSE(text.empty()) << key;
            EXPECT_TRUE(text[0] != u' ' && text.back() != u' ') << key;
        }
        EXPECT_EQ(keys, kAllKeys);
        EXPECT_EQ(language.texts.at("IDR_MAINFRAME"), language.texts.at("IDS_TITLE_INSTALLER"));
        EXPECT_EQ(language.texts.at("IDS_BROWSE_CANCEL"), language.texts.at("IDS_WIZARD_CANCEL"));
    }
}

TEST_F(StringCatalogue, TranslationsKeepNamesMarkersAndTheShapeOfTheEnglishText) {
    const auto& english = CatalogueLanguages().at(kDefaultLanguageId).texts;
    for (const auto& [id, language] : CatalogueLanguages()) {
        SCOPED_TRACE(language.code);
        const auto& t = language.texts;
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
        // The welcome title may lead into the product name that follows it with a colon.
        for (const auto& [key, source] : english) {
            for (const char16_t* tail : {u"...", u":"}) {
                if (key == "IDS_WELCOME_TITLE" && tail[0] == u':') continue;
                EXPECT_EQ(EndsWith(t.at(key), tail), EndsWith(source, tail)) << key;
            }
        }
    }
}

TEST_F(StringCatalogue, EachLanguageIsTranslatedInItsOwnAlphabet) {
    struct Expected {
        std::int32_t id;
        const char* code;
        const char16_t* letters;  // at least one must occur in the language's texts
    };
    const Expected table[] = {
        {1, "ru", u"ыэ"},        {2, "uk", u"їієґ"},   {4, "lv", u"āēīūņļķģ"}, {5, "lt", u"ąęėįųū"},
        {6, "bg", u"ъ"},         {7, "de", u"äöüß"},   {8, "ro", u"șțăâî"},    {9, "ka", u"აეი"},
        {10, "kk", u"әғқңөұүһ"}, {11, "vi", u"đơưạả"}, {12, "tr", u"ığş"},     {13, "el", u"αεο"},
        {14, "es", u"ñ¿áéíóú"},  {15, "hy", u"աեո"},   {16, "it", u"èàòù"},
    };
    const auto& english = CatalogueLanguages().at(kDefaultLanguageId).texts;
    for (const Expected& e : table) {
        SCOPED_TRACE(e.code);
        EXPECT_EQ(FindLanguage(e.code), e.id);
        bool hasLetter = false;
        int sameAsEnglish = 0;
        for (const auto& [key, text] : CatalogueLanguages().at(e.id).texts) {
            for (const char16_t* letter = e.letters; *letter != 0; ++letter)
                hasLetter = hasLetter || text.find(*letter) != Text::npos;
            sameAsEnglish += text == english.at(key) ? 1 : 0;
        }
        EXPECT_TRUE(hasLetter);
        EXPECT_LE(sameAsEnglish, 1);  // a word such as "Folder" may be shared
    }
    for (const auto& [key, text] : english)
        for (char16_t unit : text) EXPECT_LT(unit, 0x80) << key;
}

TEST_F(StringCatalogue, LookupsReturnTheCurrentLanguagesExactText) {
    EXPECT_EQ(LoadString("IDR_MAINFRAME"), Text(u"Installing configuration"));
    EXPECT_EQ(LoadString("IDS_CHOOSEDIR_FOLDER"), Text(u"&Folder:"));
    EXPECT_EQ(LoadString("IDS_ERROR_DAMAGEDSOURCE"),
              Text(u"Distribution kit file ord8.dkz corrupted or not designed for this "
                   u"installation program."));
    SetLanguage(1);
    EXPECT_EQ(CurrentLanguage(), 1);
    EXPECT_EQ(LoadString("IDS_INSTALL_ERROR"), Text(u"Ошибка при инсталляции"));
    EXPECT_EQ(LoadString("IDS_BROWSE_CANCEL"), Text(u"Отмена"));
    EXPECT_EQ(TextOf(2, "IDS_DEFPRODUCT"), Text(u"<Продукт>"));
    for (const auto& [id, language] : CatalogueLanguages()) {
        SetLanguage(id);
        for (const std::string& key : kAllKeys)
            EXPECT_EQ(LoadString(key), language.texts.at(key)) << language.code << " " << key;
    }
}

TEST_F(StringCatalogue, OnlyExactCodesAndKeysAreFound) {
    EXPECT_EQ(FindLanguage("en"), 3);
    for (const char* unknown : {"EN", "", "e", "eng", "en ", "xx"})
        EXPECT_EQ(FindLanguage(unknown), 0) << '"' << unknown << '"';
    EXPECT_EQ(FindLanguage(std::string("en\0", 3)), 0);
    for (const auto& entry : CatalogueLanguages()) {
        SetLanguage(entry.first);
        for (const char* key : {"IDS_NO_SUCH_KEY", "", "ids_wizard_back", "IDS_WIZARD_BACK "})
            EXPECT_TRUE(LoadString(key).empty()) << entry.second.code << " " << key;
    }
    for (std::int32_t id : {0, 17, -1}) {
        SetLanguage(id);
        EXPECT_TRUE(LoadString("IDR_MAINFRAME").empty()) << id;
    }
}

TEST_F(StringCatalogue, ConcurrentLookupsAlwaysSeeACompleteText) {
    const Text english = TextOf(3, "IDS_PREPARECOPY");
    const Text german = TextOf(7, "IDS_PREPARECOPY");
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
