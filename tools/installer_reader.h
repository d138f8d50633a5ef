// Loads a kit with the installer's own reader (kit/) so that list and verify see exactly
// what the installer sees: its record types, its answer, and its own words for a
// refusal. The kit is inflated once, by the installer's inflation, which also tells how
// the deflate stream ended. The loaded kit is closed before returning, so nothing is
// left open or behind. Single-threaded: the reader uses the file-system layer's
// process-wide last error.
#pragma once

#include <string>
#include <vector>

#include "kit/install_data.h"
#include "kit/lz_compressor.h"
#include "tools/kit_tables.h"

namespace kittool {

struct LoadedKit {
    ResultCode code = kOk;  // the reader's result; the tables are empty unless 0
    // Why the reader refused, as "file record 1 at byte 16: unsafe file name"; empty when
    // it loaded the kit or gave no reason.
    std::string refusal;
    StreamReport stream;  // how the deflate stream ended
    std::vector<config::ProductInfo> products;
    std::vector<KitFile> files;  // offsets as loaded: absolute in the inflated kit
};

LoadedKit LoadKit(const std::string& kitPath);

// "13 (damaged data)" and so on; the number itself for codes without a name.
std::string DescribeResultCode(ResultCode code);

}  // namespace kittool
