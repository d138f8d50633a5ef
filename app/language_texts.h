// Internal to the catalogue: the texts one language supplies, as UTF-8 literals, and
// the functions that supply them (one source file per language). Two catalogue keys
// have no member here on purpose: IDR_MAINFRAME reuses titleInstaller and
// IDS_BROWSE_CANCEL reuses wizardCancel, so those pairs cannot drift apart.
// Plain data; no threading concerns.
#pragma once

#include "app/string_catalogue.h"

namespace app {

struct LanguageTexts {
    const char* wizardBack = nullptr;
    const char* wizardNext = nullptr;
    const char* wizardFinish = nullptr;
    const char* wizardCancel = nullptr;
    const char* acceptCancel = nullptr;
    const char* titleInstaller = nullptr;
    const char* prepareCopy = nullptr;
    const char* installError = nullptr;
    const char* errorNoSource = nullptr;
    const char* errorNoTarget = nullptr;
    const char* errorNoSpace = nullptr;
    const char* chooseDirFolder = nullptr;
    const char* chooseDirTitle = nullptr;
    const char* setupEmptyTarget = nullptr;
    const char* installFinish = nullptr;
    const char* errorDamagedSource = nullptr;
    const char* defProduct = nullptr;
    const char* defProvider = nullptr;
    const char* successFinish = nullptr;
    const char* successOpenDescr = nullptr;
    const char* progressStart = nullptr;
    const char* errorFinish = nullptr;
    const char* cancelFinish = nullptr;
    const char* browseSelDir = nullptr;
    const char* browseOk = nullptr;
    const char* welcomeTitle = nullptr;
    const char* setupExistedTarget = nullptr;
    const char* destinationPrompt = nullptr;
    const char* templateCatalog = nullptr;
};

LanguageTexts RussianTexts();
LanguageTexts UkrainianTexts();
LanguageTexts EnglishTexts();
LanguageTexts LatvianTexts();
LanguageTexts LithuanianTexts();
LanguageTexts RomanianTexts();
LanguageTexts GermanTexts();
LanguageTexts BulgarianTexts();
LanguageTexts GeorgianTexts();
LanguageTexts KazakhTexts();
LanguageTexts VietnameseTexts();
LanguageTexts TurkishTexts();
LanguageTexts GreekTexts();
LanguageTexts SpanishTexts();
LanguageTexts ArmenianTexts();
LanguageTexts ItalianTexts();

// Converts every language's texts to UTF-16 under its keys. A missing or ill-formed
// literal becomes an empty text rather than a failure, so a slip in one translation
// cannot stop the program; the tests refuse empty texts.
CatalogueTable BuildCatalogue();

}  // namespace app
