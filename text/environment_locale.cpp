#include "text/environment_locale.h"

#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace stdx {
namespace detail {
namespace {

// Linux C libraries build "C.UTF-8" in; macOS has no such name but a
// character-type locale called plain "UTF-8".
#if defined(__APPLE__)
constexpr const char* kFallbackLocale = "UTF-8";
#else
constexpr const char* kFallbackLocale = "C.UTF-8";
#endif

// Only the character-type category affects the conversions, and asking for one
// category fails less often than asking for all.
locale_t make_environment_locale() {
    locale_t made = newlocale(LC_CTYPE_MASK, "", locale_t(0));
    if (made == locale_t(0)) made = newlocale(LC_CTYPE_MASK, kFallbackLocale, locale_t(0));
    if (made == locale_t(0)) made = newlocale(LC_CTYPE_MASK, "C", locale_t(0));
    return made;
}

// The variables that choose the character-type locale.
constexpr const char* kLocaleVariables[] = {"LC_ALL", "LC_CTYPE", "LANG"};
constexpr std::size_t kVariableCount = sizeof(kLocaleVariables) / sizeof(kLocaleVariables[0]);

struct Setting {
    bool present[kVariableCount] = {};
    std::string values[kVariableCount];

    static Setting current() {
        Setting now;
        for (std::size_t i = 0; i < kVariableCount; ++i) {
            const char* value = std::getenv(kLocaleVariables[i]);
            now.present[i] = value != nullptr;
            if (value != nullptr) now.values[i] = value;
        }
        return now;
    }

    bool operator==(const Setting& other) const {
        for (std::size_t i = 0; i < kVariableCount; ++i) {
            if (present[i] != other.present[i] || values[i] != other.values[i]) return false;
        }
        return true;
    }

    // Compares without copying the values, since this runs on every conversion.
    bool is_current() const {
        for (std::size_t i = 0; i < kVariableCount; ++i) {
            const char* value = std::getenv(kLocaleVariables[i]);
            if (present[i] != (value != nullptr)) return false;
            if (value != nullptr && values[i] != value) return false;
        }
        return true;
    }
};

struct LocaleEntry {
    Setting setting;
    locale_t locale;
};

// Making a locale costs tens of microseconds, far more than a conversion, so
// one is made per distinct setting of the variables (a handful per run at
// most) and kept for the life of the process. Never freeing them is what makes
// sharing them across threads safe: the C library frees a locale's conversion
// tables along with its last user, possibly while another thread still reads
// them. Entries are never destroyed, not even at exit, because conversions may
// still run from other threads or from destructors then.
struct Registry {
    std::mutex mutex;
    std::vector<std::unique_ptr<const LocaleEntry>> entries;
};
Registry& registry() {
    static Registry* const kept = new Registry();
    return *kept;
}

// The entry this thread used last; start-up may change LANG, so it is checked
// against the environment on every use.
thread_local const LocaleEntry* thread_entry = nullptr;

locale_t environment_locale() {
    if (thread_entry == nullptr || !thread_entry->setting.is_current()) {
        Setting now = Setting::current();
        Registry& kept = registry();
        std::lock_guard<std::mutex> lock(kept.mutex);
        const LocaleEntry* found = nullptr;
        for (const auto& entry : kept.entries) {
            if (entry->setting == now) found = entry.get();
        }
        if (found == nullptr) {
            kept.entries.push_back(std::make_unique<const LocaleEntry>(
                LocaleEntry{std::move(now), make_environment_locale()}));
            found = kept.entries.back().get();
        }
        thread_entry = found;
    }
    return thread_entry->locale;
}

}  // namespace

EnvironmentLocaleScope::EnvironmentLocaleScope() : previous_(uselocale(environment_locale())) {}

EnvironmentLocaleScope::~EnvironmentLocaleScope() { uselocale(previous_); }

}  // namespace detail
}  // namespace stdx
