// PROVISIONAL until config/ lands: the proposed templates directory.
#pragma once

#include <vector>

#include "text/string.h"

namespace config {

// What preparation needs from the templates-location rule.
struct TemplatesChoice {
    stdx::u16string directory;               // proposed templates directory
    std::vector<stdx::u16string> locations;  // remembered locations, in order
    bool alternateFolderChosen = false;      // locations came from the alternate folder
    bool alternateFileExists = false;        // the alternate launcher file exists
};

// Reads the launcher files and picks the first writable remembered location,
// else the default folder.
TemplatesChoice choose_templates_directory();

}  // namespace config
