// `ord8kit pack`: turns a directory of templates and a set of product descriptions into
// a kit. Reads the source tree and writes only the output kit (through a uniquely named
// temporary file beside it, flushed to the disk and renamed into place once complete, so
// a failed pack never leaves a half-written kit or clobbers an existing one). Holds one file chunk
// in memory at a time, never the whole kit. Single-threaded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/progress_line.h"

namespace kittool {

struct PackOptions {
    std::string source_dir;
    std::string output_path;
    std::vector<std::string> manifest_paths;
    std::vector<std::string> product_options;  // LANG:NAME:VENDOR:DESCRIPTION each
    int level = 9;
};

struct PackSummary {
    std::uint32_t layout = 0;
    std::size_t product_count = 0;
    std::size_t file_count = 0;
    std::uint64_t inflated_size = 0;
    std::uint64_t kit_size = 0;
    std::vector<std::string> warnings;  // one line each; the kit was still written
};

// Largest value any size or offset field of the kit can carry.
constexpr std::uint64_t kLargestKitField = 0xFFFFFFFFu;

// False with a one-line `error` when any input is refused or the kit cannot be
// written; the output path is then untouched. `progress`, when given, is updated as the
// files' bytes are packed; the caller finishes its line.
bool run_pack(const PackOptions& options, PackSummary& summary, std::string& error,
              ProgressLine* progress = nullptr);

}  // namespace kittool
