// What the fuzz targets share: a check that aborts the run with its reason, and a private
// scratch folder for files an input needs. The folder is in memory when possible
// (creating and deleting a file per input is most of the cost on a disk file system) and
// removed at exit.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

inline void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz check failed: %s\n", what);
        std::abort();
    }
}

// A plain array, so that the removal at exit outlives every static destructor.
inline char scratchFolder[] = "/dev/shm/ord8-fuzz-XXXXXX";

inline const std::string& ScratchFolder() {
    static const std::string folder = [] {
        if (mkdtemp(scratchFolder) == nullptr) {
            std::snprintf(scratchFolder, sizeof scratchFolder, "/tmp/ord8-fuzz-XXXXXX");
            Require(mkdtemp(scratchFolder) != nullptr, "mkdtemp");
        }
        std::atexit([] { std::filesystem::remove_all(scratchFolder); });
        return std::string(scratchFolder);
    }();
    return folder;
}
