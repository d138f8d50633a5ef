// Loads a kit with the installer's own reader (kit/) so that list and verify see
// exactly what the installer sees, and hands back a plain copy of the tables, or the
// reader's own words for a refusal: the rules of the tables live in the reader alone. Cleans
// up after the reader: the inflated temporary file it leaves open for the installer
// is closed and removed before returning. Single-threaded: the reader uses the
// file-system layer's process-wide last error.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/kit_tables.h"

namespace kittool {

struct ReaderView {
    std::uint32_t code = 0;  // the reader's result code; the tables are empty unless 0
    // Why the reader refused, as "file record 1 at byte 16: unsafe file name"; empty
    // when it loaded the kit or gave no reason.
    std::string refusal;
    std::vector<KitProduct> products;
    std::vector<KitFileEntry> files;  // offsets as loaded: absolute in the inflated kit
};

ReaderView load_with_installer_reader(const std::string& kit_path);

// "damaged data" for 13 and so on; the number itself for codes without a name.
std::string describe_result_code(std::uint32_t code);

}  // namespace kittool
