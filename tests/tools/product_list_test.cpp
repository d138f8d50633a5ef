// Product descriptions from manifests and --product options.
#include "tools/product_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using kittool::ProductText;

TEST(Manifest, ReadsRecordsAndSkipsCommentsBlanksMarksAndCarriageReturns) {
    const std::string text =
        "\xEF\xBB\xBF# products of the sample kit\r\n"
        "\r\n"
        "product\ten\tReport Templates\tExample Works\tdocs\\about.html\r\n"
        "   \t \n"
        "product\tru\t\xD0\xA8\xD0\xB0\xD0\xB1\xD0\xBB\xD0\xBE\xD0\xBD\xD1\x8B\t\t\n"
        "product\tde\tVorlagen\tBeispiel: GmbH\tdocs/de.html";  // no final line feed
    std::vector<ProductText> products;
    std::string error;
    ASSERT_TRUE(kittool::parse_manifest(text, products, error)) << error;
    ASSERT_EQ(products.size(), 3u);
    EXPECT_EQ(products[0].language, "en");
    EXPECT_EQ(products[0].name, "Report Templates");
    EXPECT_EQ(products[0].vendor, "Example Works");
    EXPECT_EQ(products[0].description, "docs\\about.html");
    EXPECT_EQ(products[1].name, "\xD0\xA8\xD0\xB0\xD0\xB1\xD0\xBB\xD0\xBE\xD0\xBD\xD1\x8B");
    EXPECT_EQ(products[1].vendor, "");
    EXPECT_EQ(products[1].description, "");
    EXPECT_EQ(products[2].vendor, "Beispiel: GmbH");
    EXPECT_EQ(products[2].description, "docs/de.html");
}

TEST(Manifest, RefusesBadLinesNamingTheLine) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"product\ten\tName\tVendor\n", "manifest line 1: expected 5"},
        {"# ok\nproduct\ten\tA\tB\tC\tD\n", "manifest line 2: expected 5"},
        {"\n\nproduct en Name Vendor doc\n", "manifest line 3:"},
        {"products\ten\tA\tB\tC\n", "manifest line 1: unknown record 'products'"},
    };
    for (const auto& c : cases) {
        std::vector<ProductText> products;
        std::string error;
        EXPECT_FALSE(kittool::parse_manifest(c.text, products, error)) << c.text;
        EXPECT_EQ(error.rfind(c.expected, 0), 0u) << error;
        EXPECT_EQ(error.find('\n'), std::string::npos);
    }
}

TEST(Manifest, MissingFileIsAClearError) {
    std::vector<ProductText> products;
    std::string error;
    EXPECT_FALSE(kittool::read_manifest("/nonexistent/manifest.txt", products, error));
    EXPECT_NE(error.find("/nonexistent/manifest.txt"), std::string::npos);
}

TEST(ProductOption, SplitsOnTheFirstThreeColons) {
    ProductText product;
    std::string error;
    ASSERT_TRUE(
        kittool::parse_product_option("de:Vorlagen:Beispiel:C:\\docs\\a.html", product, error));
    EXPECT_EQ(product.language, "de");
    EXPECT_EQ(product.name, "Vorlagen");
    EXPECT_EQ(product.vendor, "Beispiel");
    EXPECT_EQ(product.description, "C:\\docs\\a.html");
    ASSERT_TRUE(kittool::parse_product_option("en:::", product, error));
    EXPECT_EQ(product.name, "");
    EXPECT_EQ(product.description, "");
    EXPECT_FALSE(kittool::parse_product_option("en:Name:Vendor", product, error));
    EXPECT_NE(error.find("LANG:NAME:VENDOR:DESCRIPTION"), std::string::npos);
}

TEST(ProductLanguages, RefuseEmptyCodesAndRepeatsInAnyCase) {
    std::string error;
    EXPECT_TRUE(kittool::check_languages({{"en", "", "", ""}, {"ru", "", "", ""}}, error));
    EXPECT_TRUE(kittool::check_languages({}, error));
    EXPECT_FALSE(kittool::check_languages({{"en", "", "", ""}, {"EN", "", "", ""}}, error));
    EXPECT_NE(error.find("'EN'"), std::string::npos);
    EXPECT_FALSE(kittool::check_languages({{"", "Name", "", ""}}, error));
    EXPECT_NE(error.find("empty language"), std::string::npos);
}

}  // namespace
