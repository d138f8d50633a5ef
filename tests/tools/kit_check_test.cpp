// verify and list explain a damaged kit in the installer reader's own words.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tool_test_support.h"
#include "tools/kit_commands.h"

namespace {

using kittool_test::reference_kit;

constexpr char kReaderAnswer[] = "; the installer's reader answers 13 (damaged data)";

TEST(KitCheck, VerifyNamesTheRuleTheReaderBrokeAndWhere) {
    const std::pair<const char*, const char*> cases[] = {
        {"short-record", "product record 1 at byte 8: record length below its fixed fields"},
        {"overrunning-record", "file record 1 at byte 134: string runs past its record"},
        {"huge-count", "file table at byte 8: count cannot fit in the rest of the kit"},
        {"dotdot-name", "file record 1 at byte 16: unsafe file name"},
        {"data-outside", "file record 1 at byte 12: data range outside the kit"},
    };
    for (const auto& [name, reason] : cases) {
        std::string summary, error;
        EXPECT_FALSE(kittool::verify_kit(reference_kit(name), summary, error));
        EXPECT_EQ(error, reason + std::string(kReaderAnswer));
    }
}

TEST(KitCheck, ListGivesTheReadersReasonWithItsCode) {
    std::string listing, error;
    EXPECT_FALSE(kittool::list_kit(reference_kit("dotdot-name"), listing, error));
    EXPECT_EQ(error,
              "the installer's reader refuses the kit with code 13 (damaged data): file record 1 "
              "at byte 16: unsafe file name");
    EXPECT_EQ(listing, "");
}

}  // namespace
