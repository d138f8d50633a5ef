// Internal to text/: makes the environment's character-type locale the calling
// thread's locale for one conversion, then puts the thread's previous locale
// back. Never touches the process-wide locale, so conversions on different
// threads do not race. Each scope belongs to the thread that made it.
#pragma once

#include <locale.h>

namespace stdx {
namespace detail {

class EnvironmentLocaleScope {
  public:
    // Uses the locale that LC_ALL, LC_CTYPE and LANG name; when that locale is
    // not installed, a UTF-8 locale that always is, so UTF-8 text still converts.
    EnvironmentLocaleScope();
    ~EnvironmentLocaleScope();
    EnvironmentLocaleScope(const EnvironmentLocaleScope&) = delete;
    EnvironmentLocaleScope& operator=(const EnvironmentLocaleScope&) = delete;

  private:
    locale_t previous_;
};

}  // namespace detail
}  // namespace stdx
