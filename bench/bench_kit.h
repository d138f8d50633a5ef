// What the benchmarks share: the tables of a kit of files of given sizes, written with
// the kit tool's own encoder, named "reports\dept-N\summary-I.txt" in 97 folders.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kit/kit_format.h"
#include "tools/kit_tables.h"

// Empty when the files would not fit in a kit (offsets are 32-bit).
inline std::vector<unsigned char> BenchKitTables(const std::vector<std::uint32_t>& sizes) {
    std::vector<kittool::KitFile> entries;
    std::uint64_t offset = 0;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        kittool::KitFile entry;
        const std::string name =
            "reports\\dept-" + std::to_string(i % 97) + "\\summary-" + std::to_string(i) + ".txt";
        const std::u16string units(name.begin(), name.end());
        entry.name.assign(units.data(), units.size());
        entry.modificationTime = 133534728000000000ull;
        entry.offset = static_cast<std::uint32_t>(offset);
        entry.size = sizes[i];
        offset += sizes[i];
        entries.push_back(std::move(entry));
    }
    if (offset > kitformat::kLargestInflatedKit) return {};
    return kittool::encode_kit_tables(kitformat::kMultiLanguageLayout,
                                      {{u"en", u"Report Templates", u"Example Works", u""}},
                                      entries);
}
