// The string catalogue: every text the user sees, in sixteen languages, looked up by
// key in the one current language. It only hands out copies of built-in texts; it must
// not fall back to another language or to the key, read files, or consult the locale.
// Threading: the table is filled once (before main, or on first use, whichever comes
// first) and is read-only afterwards, so lookups are safe from any thread. The current
// language is an atomic value; start-up sets it once before any other thread exists.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "text/string.h"

// One language of the catalogue: its two-letter ASCII code and its texts by key.
struct CatalogueLanguage {
    std::string code;
    std::map<std::string, stdx::u16string> texts;
};

// Language id -> language, in ascending id order.
using CatalogueTable = std::map<std::int32_t, CatalogueLanguage>;

// Id of the language used until SetLanguage is called (English).
constexpr std::int32_t kDefaultLanguageId = 3;

// The whole catalogue, read-only. Filled on first call at the latest.
const CatalogueTable& CatalogueLanguages();

// Id of the first language (in ascending id order) whose code equals `code` byte for
// byte, case-sensitively; 0 when none does.
std::int32_t FindLanguage(const std::string& code);

// Makes `id` the current language. Not checked: an id without a table makes every
// lookup return an empty string.
void SetLanguage(std::int32_t id);

// The current language id.
std::int32_t CurrentLanguage();

// A copy of the text of `key` in the current language; an empty string when the key or
// the current language is unknown.
stdx::u16string LoadString(const std::string& key);
