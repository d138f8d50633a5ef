// PROVISIONAL: always the default folder; config/ replaces it.
#include "config/templates_location.h"

#include <cstdlib>

#include "text/encoding.h"

namespace config {

TemplatesChoice choose_templates_directory() {
    const char* home = std::getenv("HOME");
    TemplatesChoice choice;
    choice.directory = stdx::from_multibyte(stdx::mbstring(home ? home : "")) +
                       u"/.ord8/Tavri/tavri8/tmplts/";
    return choice;
}

}  // namespace config
