#include "text/environment_locale.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace stdx {
namespace detail {
namespace {

// glibc builds "C.UTF-8" in; macOS has no such name but a character-type
// locale called plain "UTF-8".
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

// The variables that choose the character-type locale, in the order the C
// library consults them.
constexpr const char* kLocaleVariables[] = {"LC_ALL", "LC_CTYPE", "LANG"};
constexpr std::size_t kVariableCount = sizeof(kLocaleVariables) / sizeof(kLocaleVariables[0]);

// Making a locale costs tens of microseconds, far more than a conversion, so
// each thread keeps the one it made for as long as the variables above keep
// their values. Start-up may still change LANG before (or between)
// conversions: the values are compared on every use.
class ThreadLocaleCache {
  public:
    ThreadLocaleCache() = default;
    ThreadLocaleCache(const ThreadLocaleCache&) = delete;
    ThreadLocaleCache& operator=(const ThreadLocaleCache&) = delete;
    ~ThreadLocaleCache();

    locale_t current() {
        const char* now[kVariableCount];
        for (std::size_t i = 0; i < kVariableCount; ++i) now[i] = std::getenv(kLocaleVariables[i]);
        if (locale_ == locale_t(0) || !same_environment(now)) {
            if (locale_ != locale_t(0)) freelocale(locale_);
            locale_ = make_environment_locale();
            for (std::size_t i = 0; i < kVariableCount; ++i) {
                present_[i] = now[i] != nullptr;
                values_[i] = now[i] != nullptr ? now[i] : "";
            }
        }
        return locale_;
    }

  private:
    bool same_environment(const char* const* now) const {
        for (std::size_t i = 0; i < kVariableCount; ++i) {
            if (present_[i] != (now[i] != nullptr)) return false;
            if (now[i] != nullptr && values_[i] != now[i]) return false;
        }
        return true;
    }

    locale_t locale_ = locale_t(0);
    bool present_[kVariableCount] = {};
    std::string values_[kVariableCount];
};

thread_local ThreadLocaleCache thread_cache;
// Trivially destructible, so it can still be read after the cache is gone:
// conversions run from destructors at thread or process exit then make their
// own locale.
thread_local bool thread_cache_gone = false;

ThreadLocaleCache::~ThreadLocaleCache() {
    if (locale_ != locale_t(0)) freelocale(locale_);
    thread_cache_gone = true;
}

}  // namespace

EnvironmentLocaleScope::EnvironmentLocaleScope()
    : owned_(thread_cache_gone ? make_environment_locale() : locale_t(0)),
      previous_(uselocale(owned_ != locale_t(0) ? owned_ : thread_cache.current())) {}

EnvironmentLocaleScope::~EnvironmentLocaleScope() {
    uselocale(previous_);
    if (owned_ != locale_t(0)) freelocale(owned_);
}

}  // namespace detail
}  // namespace stdx
