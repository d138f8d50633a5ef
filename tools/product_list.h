// The product descriptions a vendor gives the kit tool, from a manifest file and from
// `--product` options, still as UTF-8 text. Parsing only: no conversion, no file system
// access besides reading the manifest. Pure functions; safe from any thread.
//
// Manifest format, one record a line (tools/README.md has the full description):
//   product<TAB>language<TAB>name<TAB>vendor<TAB>description file
// Blank lines and lines whose first character is '#' are ignored; a UTF-8 byte order
// mark at the start and a CR before each line feed are accepted.
#pragma once

#include <string>
#include <vector>

namespace kittool {

struct ProductText {
    std::string language;
    std::string name;
    std::string vendor;
    std::string description;  // path of the description document inside the kit
};

// Appends the records of `text` (a manifest's content) to `products`. On a bad line
// returns false with `error` naming the line number and what is wrong.
bool parse_manifest(const std::string& text, std::vector<ProductText>& products,
                    std::string& error);

// Reads and parses the manifest at `path`.
bool read_manifest(const std::string& path, std::vector<ProductText>& products, std::string& error);

// Parses "LANG:NAME:VENDOR:DESCRIPTION". The first three colons split the fields, so
// the description may hold colons but the other three may not.
bool parse_product_option(const std::string& option, ProductText& product, std::string& error);

// Refuses an empty language code and a language used twice, ignoring ASCII case (the
// installer would never show the second record).
bool check_languages(const std::vector<ProductText>& products, std::string& error);

}  // namespace kittool
