#include "app/startup_choices.h"

#include <cstdlib>
#include <cstring>

#include "app/string_catalogue.h"
#include "text/utf8.h"

namespace {

constexpr char kUseCwd[] = "usecwd";
constexpr std::size_t kLocaleCodeLength = 2;

bool IsOptionPrefix(char c) { return c == '/' || c == '-'; }

// Catalogue codes are ASCII, so decoding cannot fail for a code that was found.
stdx::u16string ToText(const std::string& code) {
    stdx::u16string text;
    stdx::decode_utf8(code.data(), code.size(), text);
    return text;
}

// Step shared by the language option and the locale: adopt `code` when the catalogue
// knows it.
bool AdoptLanguage(const std::string& code, StartupChoices& choices) {
    const std::int32_t id = FindLanguage(code);
    if (id == 0) return false;
    choices.languageId = id;
    choices.languageName = ToText(code);
    return true;
}

}  // namespace

StartupChoices ChooseStartup(int argc, const char* const* argv, const std::string& localeId,
                             const char* currentLang) {
    StartupChoices choices;
    choices.languageName = ToText("en");

    int first = 1;
    // The compare covers the terminating NUL, so only the exact word matches.
    if (argc >= 2 && argv[1] != nullptr && std::strncmp(argv[1], kUseCwd, sizeof kUseCwd) == 0) {
        choices.useCwd = true;
        first = 2;
    }

    for (int i = first; i < argc; ++i) {
        const char* arg = argv[i];
        if (arg == nullptr || !IsOptionPrefix(arg[0])) continue;
        const char kind = arg[1];
        if (kind == 'S' || kind == 's') {
            choices.silent = true;
        } else if (kind == 'L' || kind == 'l') {
            AdoptLanguage(arg + 2, choices);
            break;
        }
    }

    if (choices.languageId == 0) {
        if (currentLang == nullptr || currentLang[0] == '\0')
            choices.langToSet = localeId + ".UTF-8";
        const std::string code =
            localeId.size() > kLocaleCodeLength ? localeId.substr(0, kLocaleCodeLength) : localeId;
        if (!AdoptLanguage(code, choices)) choices.languageId = kDefaultLanguageId;
    }
    return choices;
}

stdx::u16string ApplyStartupChoices(const StartupChoices& choices) {
    if (choices.langToSet) ::setenv("LANG", choices.langToSet->c_str(), 1);
    SetLanguage(choices.languageId);
    return LoadString("IDR_MAINFRAME");
}
