// kit: InstallerSession holds what preparation finds out before the wizard starts: the
// kit's path, the proposed templates directory with the remembered locations and their
// flags, and the loaded kit. It is plain data with no behaviour; the wizard controller
// owns one for the whole run.
//
// Threads: filled on the main thread before the installation worker exists; afterwards
// the worker uses only `installData` (see kit/install_data.h).
#pragma once

#include <cstdint>
#include <vector>

#include "fs/file_system.h"
#include "kit/install_data.h"
#include "kit/lz_compressor.h"
#include "text/string.h"

struct InstallerSession {
    bool useCwd = false;        // the kit lies in the working directory ("usecwd")
    stdx::u16string kitPath;    // full path of ord8.dkz once it was found
    stdx::u16string targetDir;  // proposed templates directory; may be empty
    std::vector<stdx::u16string> templateLocations;  // remembered locations, in order
    bool alternateFolderChosen = false;              // the locations came from the alternate folder
    bool alternateFileExists = false;                // the alternate launcher file exists
    InstallData<LZCompressor, FileSystem> installData;
    std::int32_t prepareStatus = -1;  // 0 once preparation succeeded
};
