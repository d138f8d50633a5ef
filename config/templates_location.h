// config: the launcher's configuration file ("key=value" lines in ostart.cfg under the
// home directory) and the templates directory the installer proposes from it. This
// module reads the remembered template locations, picks the first writable one (else a
// fixed default under the product's settings folder), and after an installation writes
// the locations back so the launcher finds them. It must never lose the launcher's other
// settings: they are carried through untouched, and a rewrite replaces the file as a
// whole or not at all. Failures come back as result codes; no exception leaves this
// header's functions. Threads: call from one thread at a time (the main thread): home
// expansion (wordexp) is not safe to run on two threads at once, and each write-back
// rereads and rewrites whole files. The text conversions leave process-wide state alone.
#pragma once

#include <vector>

#include "config/launcher_config_file.h"
#include "text/string.h"

namespace config {

// What preparation needs from the templates-location rule; the dialog keeps it.
struct TemplatesChoice {
    stdx::u16string directory;               // proposed templates directory
    std::vector<stdx::u16string> locations;  // remembered locations, in order
    bool alternateFolderChosen = false;      // locations came from the alternate folder
    bool alternateFileExists = false;        // the alternate launcher file exists
};

// The file in the alternate launcher folder is noted; the ordinary launcher file, when
// present, gives the locations, else the alternate file does. The first location that
// is_writable_directory() accepts is proposed (as remembered: a trailing backslash
// stays), else default_templates_directory().
TemplatesChoice choose_templates_directory();

// The "ConfigurationTemplatesLocation" values of the pair picked by `alternate`
// (LauncherConfig::values_of, stores in order A, B, C).
std::vector<stdx::u16string> remembered_template_locations(bool alternate);

// Writes `locations` to the ordinary launcher file unless they came from the alternate
// folder, and to the alternate file when it exists. Both writes are tried; the first
// failure is answered.
ConfigWriteResult remember_template_locations(const std::vector<stdx::u16string>& locations,
                                              bool alternateFolderChosen, bool alternateFileExists);

// After an installation into `directory`: puts it first in choice.locations (dropping a
// remembered spelling of the same folder, so it is proposed next time) and writes the
// list back with remember_template_locations.
ConfigWriteResult remember_installed_directory(TemplatesChoice& choice,
                                               const stdx::u16string& directory);

// True when a probe file (prefix "Tavri") can be made inside `directory` and removed.
// Backslashes count as "/", as for every use of a remembered location.
bool is_writable_directory(const stdx::u16string& directory);

}  // namespace config
