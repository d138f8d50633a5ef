#include <cstring>

#include "app/language_texts.h"
#include "text/utf8.h"

namespace app {
namespace {

// The literals are decoded as UTF-8 below, so the compiler must store them as UTF-8.
static_assert(sizeof("\u00e9") == 3 && "\u00e9"[0] == '\xC3' && "\u00e9"[1] == '\xA9',
              "the execution character set must be UTF-8");

struct KeyBinding {
    const char* key;
    const char* LanguageTexts::*text;
};

// Every key with the member that supplies its text. The two aliases point at the
// member of the text they must always equal.
constexpr KeyBinding kKeys[] = {
    {"IDS_WIZARD_BACK", &LanguageTexts::wizardBack},
    {"IDS_WIZARD_NEXT", &LanguageTexts::wizardNext},
    {"IDS_WIZARD_FINISH", &LanguageTexts::wizardFinish},
    {"IDS_WIZARD_CANCEL", &LanguageTexts::wizardCancel},
    {"IDS_ACCEPT_CANCEL", &LanguageTexts::acceptCancel},
    {"IDS_TITLE_INSTALLER", &LanguageTexts::titleInstaller},
    {"IDS_PREPARECOPY", &LanguageTexts::prepareCopy},
    {"IDS_INSTALL_ERROR", &LanguageTexts::installError},
    {"IDS_ERROR_NOSOURCE", &LanguageTexts::errorNoSource},
    {"IDS_ERROR_NOTARGET", &LanguageTexts::errorNoTarget},
    {"IDS_ERROR_NOSPACE", &LanguageTexts::errorNoSpace},
    {"IDS_CHOOSEDIR_FOLDER", &LanguageTexts::chooseDirFolder},
    {"IDS_CHOOSEDIR_TITLE", &LanguageTexts::chooseDirTitle},
    {"IDR_MAINFRAME", &LanguageTexts::titleInstaller},
    {"IDS_SETUP_EMPTYTARGET", &LanguageTexts::setupEmptyTarget},
    {"IDS_INSTALL_FINISH", &LanguageTexts::installFinish},
    {"IDS_ERROR_DAMAGEDSOURCE", &LanguageTexts::errorDamagedSource},
    {"IDS_DEFPRODUCT", &LanguageTexts::defProduct},
    {"IDS_DEFPROVIDER", &LanguageTexts::defProvider},
    {"IDS_SUCCESS_FINISH", &LanguageTexts::successFinish},
    {"IDS_SUCCESS_OPENDESCR", &LanguageTexts::successOpenDescr},
    {"IDS_PROGRESS_START", &LanguageTexts::progressStart},
    {"IDS_ERROR_FINISH", &LanguageTexts::errorFinish},
    {"IDS_CANCEL_FINISH", &LanguageTexts::cancelFinish},
    {"IDS_BROWSE_SELDIR", &LanguageTexts::browseSelDir},
    {"IDS_BROWSE_OK", &LanguageTexts::browseOk},
    {"IDS_BROWSE_CANCEL", &LanguageTexts::wizardCancel},
    {"IDS_WELCOME_TITLE", &LanguageTexts::welcomeTitle},
    {"IDS_SETUP_EXISTEDTARGET", &LanguageTexts::setupExistedTarget},
    {"IDS_DESTINATION_PROMPT", &LanguageTexts::destinationPrompt},
    {"IDS_TEMPLATE_CATALOG", &LanguageTexts::templateCatalog},
};

struct LanguageSource {
    std::int32_t id;
    const char* code;
    LanguageTexts (*texts)();
};

// In the order the tables are filled; the ids are fixed and id 3 is the default.
constexpr LanguageSource kLanguages[] = {
    {1, "ru", RussianTexts},  {2, "uk", UkrainianTexts},   {3, "en", EnglishTexts},
    {4, "lv", LatvianTexts},  {5, "lt", LithuanianTexts},  {8, "ro", RomanianTexts},
    {7, "de", GermanTexts},   {6, "bg", BulgarianTexts},   {9, "ka", GeorgianTexts},
    {10, "kk", KazakhTexts},  {11, "vi", VietnameseTexts}, {12, "tr", TurkishTexts},
    {13, "el", GreekTexts},   {14, "es", SpanishTexts},    {15, "hy", ArmenianTexts},
    {16, "it", ItalianTexts},
};

stdx::u16string DecodeLiteral(const char* literal) {
    stdx::u16string text;  // stays empty when the literal is missing or refused
    if (literal != nullptr) stdx::decode_utf8(literal, std::strlen(literal), text);
    return text;
}

}  // namespace

CatalogueTable BuildCatalogue() {
    CatalogueTable table;
    for (const LanguageSource& source : kLanguages) {
        const LanguageTexts texts = source.texts();
        CatalogueLanguage& language = table[source.id];
        language.code = source.code;
        for (const KeyBinding& binding : kKeys)
            language.texts[binding.key] = DecodeLiteral(texts.*binding.text);
    }
    return table;
}

}  // namespace app
