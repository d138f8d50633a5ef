// Shared helpers for the config tests: a fresh HOME per test, byte-exact file access,
// and a UTF-8 locale so non-ASCII text converts.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "text/string.h"

namespace configtest {

stdx::u16string u16(const std::string& text);
std::string read_bytes(const std::string& path);
// Creates the parent folders as needed.
void write_bytes(const std::string& path, const std::string& bytes);
std::set<std::string> names_in(const std::string& folder);

// Each test gets a new, empty home directory as HOME; the old HOME comes back after.
class TempHome : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    std::string home_;
    std::string ordinaryFile() const { return home_ + "/.Tavri/ostart/ostart.cfg"; }
    std::string alternateFile() const { return home_ + "/.Tavri/ostartt/ostart.cfg"; }
    std::string productFile() const { return home_ + "/.ord8//.Tavri/ostart/ostart.cfg"; }

  private:
    std::string savedHome_;
    bool hadHome_ = false;
};

}  // namespace configtest
