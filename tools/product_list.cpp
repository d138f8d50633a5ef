#include "tools/product_list.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

namespace kittool {

namespace {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(separator, start);
        fields.push_back(text.substr(start, end == std::string::npos ? end : end - start));
        if (end == std::string::npos) return fields;
        start = end + 1;
    }
}

}  // namespace

bool parse_manifest(const std::string& text, std::vector<ProductText>& products,
                    std::string& error) {
    static const char kByteOrderMark[] = "\xEF\xBB\xBF";
    std::size_t position = text.compare(0, 3, kByteOrderMark) == 0 ? 3 : 0;
    for (unsigned line_number = 1; position < text.size(); ++line_number) {
        std::size_t end = text.find('\n', position);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(position, end - position);
        position = end + 1;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos || line[0] == '#') continue;

        const std::string where = "manifest line " + std::to_string(line_number) + ": ";
        const std::vector<std::string> fields = split(line, '\t');
        if (fields[0] != "product") {
            error = where + "unknown record '" + fields[0] + "' (expected 'product')";
            return false;
        }
        if (fields.size() != 5) {
            error = where + "expected 5 tab-separated fields (product, language, name, " +
                    "vendor, description), found " + std::to_string(fields.size());
            return false;
        }
        products.push_back(ProductText{fields[1], fields[2], fields[3], fields[4]});
    }
    return true;
}

bool read_manifest(const std::string& path, std::vector<ProductText>& products,
                   std::string& error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = "cannot read manifest '" + path + "': " + std::strerror(errno);
        return false;
    }
    std::ostringstream content;
    content << in.rdbuf();
    if (in.bad()) {
        error = "cannot read manifest '" + path + "'";
        return false;
    }
    return parse_manifest(content.str(), products, error);
}

bool parse_product_option(const std::string& option, ProductText& product, std::string& error) {
    std::size_t colons[3];
    std::size_t from = 0;
    for (std::size_t& colon : colons) {
        colon = option.find(':', from);
        if (colon == std::string::npos) {
            error = "--product '" + option + "': expected LANG:NAME:VENDOR:DESCRIPTION";
            return false;
        }
        from = colon + 1;
    }
    product.language = option.substr(0, colons[0]);
    product.name = option.substr(colons[0] + 1, colons[1] - colons[0] - 1);
    product.vendor = option.substr(colons[1] + 1, colons[2] - colons[1] - 1);
    product.description = option.substr(colons[2] + 1);
    return true;
}

bool check_languages(const std::vector<ProductText>& products, std::string& error) {
    std::set<std::string> seen;
    for (const ProductText& product : products) {
        if (product.language.empty()) {
            error = "product '" + product.name + "' has an empty language code";
            return false;
        }
        // The installer matches languages without regard to case.
        std::string folded = product.language;
        for (char& c : folded)
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        if (!seen.insert(folded).second) {
            error = "language '" + product.language + "' has more than one product record";
            return false;
        }
    }
    return true;
}

}  // namespace kittool
