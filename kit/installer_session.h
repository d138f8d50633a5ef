// kit: InstallerSession holds what preparation finds out before the installation starts:
// the kit's path, the templates choice (the proposed directory with the remembered
// locations and their flags, kept whole for the write-back after the install) and the
// loaded kit. It is plain data with no behaviour; the wizard controller or the headless
// install owns one for the whole run.
//
// Threads: filled on the main thread before the installation worker exists; afterwards
// the worker uses only `installData` (see kit/install_data.h).
#pragma once

#include <cstdint>

#include "config/templates_location.h"
#include "fs/file_system.h"
#include "kit/install_data.h"
#include "kit/lz_compressor.h"
#include "text/string.h"

struct InstallerSession {
    bool useCwd = false;      // the kit lies in the working directory ("usecwd")
    stdx::u16string kitPath;  // full path of ord8.dkz once it was found
    // templates.directory is the proposed templates directory, normalised; may be empty.
    config::TemplatesChoice templates;
    InstallData<LZCompressor, FileSystem> installData;
    std::int32_t prepareStatus = -1;  // 0 once preparation succeeded
};
