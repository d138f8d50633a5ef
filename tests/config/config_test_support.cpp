#include "config_test_support.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include "text/encoding.h"

namespace configtest {
namespace {

class Utf8Locale : public ::testing::Environment {
    void SetUp() override { setenv("LC_ALL", "C.UTF-8", 1); }
};
::testing::Environment* const kLocale = ::testing::AddGlobalTestEnvironment(new Utf8Locale);

}  // namespace

stdx::u16string u16(const std::string& text) {
    return stdx::from_multibyte(stdx::mbstring(text.c_str()));
}

std::string read_bytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void write_bytes(const std::string& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::set<std::string> names_in(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

void TempHome::SetUp() {
    char pattern[] = "/tmp/ord8-config-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    home_ = pattern;
    const char* old = std::getenv("HOME");
    hadHome_ = old != nullptr;
    if (hadHome_) savedHome_ = old;
    setenv("HOME", home_.c_str(), 1);
}

void TempHome::TearDown() {
    if (hadHome_)
        setenv("HOME", savedHome_.c_str(), 1);
    else
        unsetenv("HOME");
    std::filesystem::remove_all(home_);
}

}  // namespace configtest
