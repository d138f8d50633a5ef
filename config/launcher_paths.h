// Where the launcher's configuration files and the product's settings live, all under
// the user's home directory, and whether a file is there. Every path is built anew from
// the home directory on each call; "/" is the only separator used in joining.
#pragma once

#include <optional>

#include "text/string.h"

namespace config {

// "~" expanded by wordexp, first word; empty when the expansion yields nothing, in
// which case every path below starts with "/".
stdx::u16string home_directory();

stdx::u16string product_settings_folder();  // home/.ord8/
// product_settings_folder() when the home directory is known and is a folder; nothing
// otherwise, so that no journal is ever kept in "/.ord8/".
std::optional<stdx::u16string> existing_settings_folder();
stdx::u16string launcher_folder();                 // home/.Tavri/ostart
stdx::u16string launcher_config_path();            // launcher_folder()/ostart.cfg
stdx::u16string alternate_launcher_folder();       // home/.Tavri/ostartt (the doubled t is real)
stdx::u16string alternate_launcher_config_path();  // alternate_launcher_folder()/ostart.cfg
// product_settings_folder() + "/.Tavri/ostart": two separators in a row, as the
// launcher builds it.
stdx::u16string product_launcher_folder();
stdx::u16string product_launcher_config_path();  // product_launcher_folder()/ostart.cfg

stdx::u16string default_templates_base();       // home/.ord8/Tavri/tavri8/
stdx::u16string default_templates_directory();  // default_templates_base() + "tmplts/"

// The text before the last "/" or backslash; empty when there is neither.
stdx::u16string folder_of(const stdx::u16string& path);

// True when FileSystem::FindFirst finds `path` itself.
bool file_exists(const stdx::u16string& path);

}  // namespace config
