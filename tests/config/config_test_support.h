// Shared helpers for the config tests: a fresh HOME per test, byte-exact file access,
// and a UTF-8 locale so non-ASCII text converts.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "text/encoding.h"

namespace configtest {

inline stdx::u16string u16(const std::string& text) {
    return stdx::from_multibyte(stdx::mbstring(text.c_str()));
}

inline std::string read_bytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void write_bytes(const std::string& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::set<std::string> names_in(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

// HOME is a new, empty folder for each test, removed afterwards. In texts given to
// expand(), "$H" stands for it and "$K" for "ConfigurationTemplatesLocation=".
class TempHome : public ::testing::Test {
  protected:
    void SetUp() override {
        setenv("LC_ALL", "C.UTF-8", 1);
        char pattern[] = "/tmp/ord8-config-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        home_ = pattern;
        setenv("HOME", home_.c_str(), 1);
    }
    void TearDown() override { std::filesystem::remove_all(home_); }

    std::string expand(std::string text) const {
        for (const auto& [from, to] : {std::pair<std::string, std::string>{"$H", home_},
                                       {"$K", "ConfigurationTemplatesLocation="}})
            for (auto at = text.find(from); at != std::string::npos;
                 at = text.find(from, at + to.size()))
                text.replace(at, from.size(), to);
        return text;
    }
    std::string ordinaryFile() const { return home_ + "/.Tavri/ostart/ostart.cfg"; }
    std::string alternateFile() const { return home_ + "/.Tavri/ostartt/ostart.cfg"; }

    std::string home_;
};

}  // namespace configtest
