#include "config/launcher_paths.h"

#include <sys/stat.h>
#include <wordexp.h>

#include "fs/file_system.h"
#include "text/encoding.h"

namespace config {
namespace {

constexpr char16_t kConfigFileName[] = u"ostart.cfg";
// The maker's product folder is its name in lower case followed by the product's
// generation number, which is kept as a number on purpose.
constexpr std::int32_t kProductGeneration = 8;

}  // namespace

stdx::u16string home_directory() {
    wordexp_t words{};
    const int status = wordexp("~", &words, WRDE_NOCMD);
    stdx::u16string home;
    if (status == 0 && words.we_wordc > 0)
        home = stdx::from_multibyte(stdx::mbstring(words.we_wordv[0]));
    // Out of memory may leave a partial expansion behind, which must be freed too.
    if (status == 0 || status == WRDE_NOSPACE) wordfree(&words);
    return home;
}

stdx::u16string product_settings_folder() { return home_directory() + u"/" + u".ord8" + u"/"; }

std::optional<stdx::u16string> existing_settings_folder() {
    const stdx::u16string home = home_directory();
    const std::optional<stdx::mbstring> system = FileSystem::ToSystemPath(home);
    struct stat status {};
    if (home.empty() || !system || stat(system->c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        return std::nullopt;
    return product_settings_folder();
}

stdx::u16string launcher_folder() { return home_directory() + u"/" + u".Tavri/ostart"; }

stdx::u16string launcher_config_path() { return launcher_folder() + u"/" + kConfigFileName; }

stdx::u16string alternate_launcher_folder() { return home_directory() + u"/" + u".Tavri/ostartt"; }

stdx::u16string alternate_launcher_config_path() {
    return alternate_launcher_folder() + u"/" + kConfigFileName;
}

stdx::u16string product_launcher_folder() {
    return product_settings_folder() + u"/" + u".Tavri/ostart";
}

stdx::u16string product_launcher_config_path() {
    return product_launcher_folder() + u"/" + kConfigFileName;
}

stdx::u16string default_templates_base() {
    return product_settings_folder() + u"Tavri" + u"/" + u"tavri" +
           stdx::integer_to_text<stdx::u16string>(kProductGeneration, 10) + u"/";
}

stdx::u16string default_templates_directory() {
    return default_templates_base() + u"tmplts" + u"/";
}

stdx::u16string folder_of(const stdx::u16string& path) {
    const std::size_t slash = path.rfind(u'/');
    const std::size_t backslash = path.rfind(u'\\');
    std::size_t cut = slash;
    if (cut == stdx::u16string::npos || (backslash != stdx::u16string::npos && backslash > cut))
        cut = backslash;
    return cut == stdx::u16string::npos ? stdx::u16string() : path.substr(0, cut);
}

bool file_exists(const stdx::u16string& path) {
    FindData find;
    const bool found = FileSystem::FindFirst(find, path);
    FileSystem::FindClose(find);
    return found;
}

}  // namespace config
