// Writes the head of an inflated kit: layout, product records and file records, in the
// byte format of kit/kit_format.h. Knows nothing of files on disk or of compression;
// the caller supplies converted text and already-checked sizes. Pure functions; safe
// from any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "kit/install_data.h"

namespace kittool {

using KitFile = config::FileData<FileSystem>;

// Layout 0 only for exactly one product whose language is "en": that layout cannot
// store a language and the reader assumes English. Everything else uses layout 1.
std::uint32_t choose_layout(const std::vector<config::ProductInfo>& products);

// The bytes from position 0 up to the data area, from the reader's own records; file
// offsets count from the start of the data area. Layout 0 requires exactly one product.
// No string may exceed 2^31 - 1 units (callers refuse such text much earlier).
std::vector<unsigned char> encode_kit_tables(std::uint32_t layout,
                                             const std::vector<config::ProductInfo>& products,
                                             const std::vector<KitFile>& files);

}  // namespace kittool
