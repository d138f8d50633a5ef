#include "assets/page_images.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace {

// The n bytes at offset as an unsigned number, little-endian (BMP) or big-endian (PNG).
std::uint32_t Number(ImageBytes image, std::size_t offset, std::size_t n, bool little) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < n; ++i)
        value = value << 8 | image.data[offset + (little ? n - 1 - i : i)];
    return value;
}

// The header fields a viewer reads before it trusts the rest of the bytes.
TEST(AssetsPageImages, HeadersSayWhatTheWindowExpects) {
    const ImageBytes side = SideImage(), error = ErrorIcon(), question = QuestionIcon();
    struct Fact {
        const char* what;
        ImageBytes image;
        std::size_t offset, length;
        std::uint32_t expected;
    };
    const Fact facts[] = {
        {"bmp magic BM", side, 0, 2, 0x4d42},
        {"bmp file size", side, 2, 4, 46838},
        {"bmp pixel offset", side, 10, 4, 1078},
        {"bmp BITMAPINFOHEADER", side, 14, 4, 40},
        {"bmp width", side, 18, 4, 158},
        {"bmp height, positive: bottom-up rows", side, 22, 4, 286},
        {"bmp bits per pixel", side, 28, 2, 8},
        {"bmp uncompressed", side, 30, 4, 0},
        {"bmp palette entries", side, 46, 4, 256},
        {"error png signature", error, 0, 4, 0x89504e47},
        {"error png signature end", error, 4, 4, 0x0d0a1a0a},
        {"error png IHDR first", error, 12, 4, 0x49484452},
        {"error png width", error, 16, 4, 125},
        {"error png height", error, 20, 4, 125},
        {"error png 8-bit RGBA", error, 24, 2, 0x0806},
        {"question png signature", question, 0, 4, 0x89504e47},
        {"question png signature end", question, 4, 4, 0x0d0a1a0a},
        {"question png IHDR first", question, 12, 4, 0x49484452},
        {"question png width", question, 16, 4, 256},
        {"question png height", question, 20, 4, 256},
        {"question png 8-bit RGBA", question, 24, 2, 0x0806},
    };
    EXPECT_EQ(side.size, 46838u);
    for (const Fact& fact : facts) {
        ASSERT_GE(fact.image.size, fact.offset + fact.length) << fact.what;
        const bool little = fact.image.data == side.data;
        EXPECT_EQ(Number(fact.image, fact.offset, fact.length, little), fact.expected) << fact.what;
    }
}

}  // namespace
