#include "app/string_catalogue.h"

#include <atomic>

#include "app/language_texts.h"

namespace {

// Constant-initialised, so it holds English even for lookups made by other static
// initialisers.
std::atomic<std::int32_t> g_currentLanguage{kDefaultLanguageId};

// Fills the table before main. It sits in the same object file as LoadString so that
// no program can link the lookup without also linking the filling.
[[maybe_unused]] const bool g_filledBeforeMain = (CatalogueLanguages(), true);

}  // namespace

const CatalogueTable& CatalogueLanguages() {
    // A function-local static so that a lookup from another translation unit's static
    // initialiser still finds the table filled.
    static const CatalogueTable table = app::BuildCatalogue();
    return table;
}

std::int32_t FindLanguage(const std::string& code) {
    for (const auto& [id, language] : CatalogueLanguages())
        if (language.code == code) return id;
    return 0;
}

void SetLanguage(std::int32_t id) { g_currentLanguage.store(id, std::memory_order_relaxed); }

std::int32_t CurrentLanguage() { return g_currentLanguage.load(std::memory_order_relaxed); }

stdx::u16string LoadString(const std::string& key) {
    const CatalogueTable& table = CatalogueLanguages();
    const auto language = table.find(CurrentLanguage());
    if (language == table.end()) return {};
    const auto text = language->second.texts.find(key);
    if (text == language->second.texts.end()) return {};
    return text->second;
}
