// Start-up choices: reads the command line, the locale identifier and LANG, and decides
// whether to use the current directory, whether to run silently, which catalogue
// language to use and whether LANG must be set. ChooseStartup is pure: it must not read
// the environment or the locale itself, so the window layer hands both in. Only
// ApplyStartupChoices touches process state (LANG and the catalogue language); call it
// once on the main thread before any other thread starts, as setenv is not thread-safe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "text/string.h"

struct StartupChoices {
    bool useCwd = false;                   // first argument is exactly "usecwd"
    bool silent = false;                   // /S or -s seen before the first language option
    std::int32_t languageId = 0;           // always a catalogue id after ChooseStartup
    stdx::u16string languageName;          // two-letter code of the chosen language
    std::optional<std::string> langToSet;  // new value for LANG, when it must be set
};

// argv holds argc C strings (argv[0] is the program). localeId is the UTF-8 identifier
// of the current locale (for example "en_US"); currentLang is the value of LANG, or
// nullptr when it is unset. Rules:
//  - "usecwd" as the whole first argument sets useCwd; options are read from the
//    argument after it, otherwise from the first argument.
//  - An option starts with '/' or '-'. 'S'/'s' as its second character sets silent;
//    'L'/'l' looks the rest of the argument up as a language code (case-sensitive) and
//    ends the scan whether or not the code is known. Anything else is ignored.
//  - Without a known language option the locale decides: an identifier of 3 or more
//    bytes is cut to its first 2; an unknown code gives English (id 3, "en").
//    In that case only, LANG is set to the uncut identifier plus ".UTF-8" when
//    currentLang is unset or empty.
StartupChoices ChooseStartup(int argc, const char* const* argv, const std::string& localeId,
                             const char* currentLang);

// Sets LANG when the choices ask for it, makes choices.languageId the catalogue's
// current language, and returns the window title (catalogue key IDR_MAINFRAME).
stdx::u16string ApplyStartupChoices(const StartupChoices& choices);
