// Writes the head of an inflated kit: layout, product records and file records, in the
// byte format of kit/kit_format.h. Knows nothing of files on disk or of compression;
// the caller supplies converted text and already-checked sizes. Pure functions; safe
// from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kittool {

struct KitProduct {
    std::u16string language;
    std::u16string name;
    std::u16string vendor;
    std::u16string description;
};

struct KitFileEntry {
    std::u16string name;  // relative path with '\' between components
    std::uint64_t modification_time = 0;
    std::uint32_t offset = 0;  // from the start of the data area
    std::uint32_t size = 0;
};

// Layout 0 only for exactly one product whose language is "en": that layout cannot
// store a language and the reader assumes English. Everything else uses layout 1.
std::uint32_t choose_layout(const std::vector<KitProduct>& products);

// The bytes from position 0 up to the data area. Layout 0 requires exactly one product.
// No string may exceed 2^31 - 1 units (callers refuse such text much earlier).
std::vector<unsigned char> encode_kit_tables(std::uint32_t layout,
                                             const std::vector<KitProduct>& products,
                                             const std::vector<KitFileEntry>& files);

}  // namespace kittool
