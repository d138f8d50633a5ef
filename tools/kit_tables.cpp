#include "tools/kit_tables.h"

#include <algorithm>

#include "kit/kit_format.h"

namespace kittool {

namespace {

void append_kit_string(std::vector<unsigned char>& out, const stdx::u16string& text) {
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

std::uint32_t choose_layout(const std::vector<config::ProductInfo>& products) {
    if (products.size() == 1 && products[0].language == u"en")
        return kitformat::kSingleProductLayout;
    return kitformat::kMultiLanguageLayout;
}

std::vector<unsigned char> encode_kit_tables(std::uint32_t layout,
                                             const std::vector<config::ProductInfo>& products,
                                             const std::vector<KitFile>& files) {
    std::vector<unsigned char> out;
    kitformat::append_u32le(out, layout);
    if (layout == kitformat::kSingleProductLayout) {
        append_kit_string(out, products.at(0).productName);
        append_kit_string(out, products.at(0).provider);
        append_kit_string(out, products.at(0).descriptionFile);
    } else {
        kitformat::append_u32le(out, static_cast<std::uint32_t>(products.size()));
        for (const config::ProductInfo& product : products) {
            const std::size_t start = out.size();
            kitformat::append_u32le(out, 0);
            append_kit_string(out, product.language);
            append_kit_string(out, product.productName);
            append_kit_string(out, product.provider);
            append_kit_string(out, product.descriptionFile);
            patch_record_length(out, start);
        }
    }
    kitformat::append_u32le(out, static_cast<std::uint32_t>(files.size()));
    for (const KitFile& file : files) {
        const std::size_t start = out.size();
        kitformat::append_u32le(out, 0);
        append_kit_string(out, file.name);
        kitformat::append_u64le(out, file.modificationTime);
        kitformat::append_u32le(out, file.offset);
        kitformat::append_u32le(out, file.size);
        patch_record_length(out, start);
    }
    return out;
}

}  // namespace kittool
