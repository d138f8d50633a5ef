#include "tools/kit_tables.h"

#include <algorithm>

#include "kit/kit_format.h"

namespace kittool {

namespace {

void append_kit_string(std::vector<unsigned char>& out, const std::u16string& text) {
    kitformat::append_u32le(out, static_cast<std::uint32_t>(text.size()));
    for (const char16_t unit : text) {
        out.push_back(static_cast<unsigned char>(unit & 0xFF));
        out.push_back(static_cast<unsigned char>(unit >> 8));
    }
}

// A record's length field covers the whole record, so it is patched in once the
// record's body is known.
void patch_record_length(std::vector<unsigned char>& out, std::size_t record_start) {
    std::vector<unsigned char> length;
    kitformat::append_u32le(length, static_cast<std::uint32_t>(out.size() - record_start));
    std::copy(length.begin(), length.end(), out.begin() + static_cast<long>(record_start));
}

}  // namespace

std::uint32_t choose_layout(const std::vector<KitProduct>& products) {
    if (products.size() == 1 && products[0].language == u"en")
        return kitformat::kSingleProductLayout;
    return kitformat::kMultiLanguageLayout;
}

std::vector<unsigned char> encode_kit_tables(std::uint32_t layout,
                                             const std::vector<KitProduct>& products,
                                             const std::vector<KitFileEntry>& files) {
    std::vector<unsigned char> out;
    kitformat::append_u32le(out, layout);
    if (layout == kitformat::kSingleProductLayout) {
        append_kit_string(out, products.at(0).name);
        append_kit_string(out, products.at(0).vendor);
        append_kit_string(out, products.at(0).description);
    } else {
        kitformat::append_u32le(out, static_cast<std::uint32_t>(products.size()));
        for (const KitProduct& product : products) {
            const std::size_t start = out.size();
            kitformat::append_u32le(out, 0);
            append_kit_string(out, product.language);
            append_kit_string(out, product.name);
            append_kit_string(out, product.vendor);
            append_kit_string(out, product.description);
            patch_record_length(out, start);
        }
    }
    kitformat::append_u32le(out, static_cast<std::uint32_t>(files.size()));
    for (const KitFileEntry& file : files) {
        const std::size_t start = out.size();
        kitformat::append_u32le(out, 0);
        append_kit_string(out, file.name);
        kitformat::append_u64le(out, file.modification_time);
        kitformat::append_u32le(out, file.offset);
        kitformat::append_u32le(out, file.size);
        patch_record_length(out, start);
    }
    return out;
}

}  // namespace kittool
