#include "config/templates_location.h"

#include "config/launcher_config.h"
#include "config/launcher_keys.h"
#include "config/launcher_paths.h"
#include "fs/file_system.h"
#include "text/encoding.h"

namespace config {
namespace {

// A location as a folder path: backslashes turned into "/", ending in "/".
stdx::u16string as_folder(stdx::u16string location) {
    stdx::replace_all(location, stdx::u16string(u"\\"), stdx::u16string(u"/"));
    if (!location.empty() && location.back() != u'/') location.push_back(u'/');
    return location;
}

bool same_folder(const stdx::u16string& a, const stdx::u16string& b) {
    return stdx::compare_no_case(as_folder(a), as_folder(b)) == 0;
}

ConfigWriteResult save_locations(const std::vector<stdx::u16string>& locations, bool alternate) {
    try {
        LauncherConfig config(alternate);
        config.save(locations);
        return kConfigWritten;
    } catch (int code) {
        return code == kConfigCannotOpen ? kConfigCannotOpen : kConfigCannotWrite;
    } catch (...) {
        // Running out of memory half way also means the file was not written.
        return kConfigCannotWrite;
    }
}

}  // namespace

TemplatesChoice choose_templates_directory() {
    TemplatesChoice choice;
    choice.alternateFileExists = file_exists(alternate_launcher_config_path());
    if (file_exists(launcher_config_path())) {
        choice.locations = remembered_template_locations(false);
    } else if (choice.alternateFileExists) {
        choice.locations = remembered_template_locations(true);
        choice.alternateFolderChosen = !choice.locations.empty();
    }
    for (const stdx::u16string& location : choice.locations) {
        if (is_writable_directory(location)) {
            choice.directory = location;
            return choice;
        }
    }
    choice.directory = default_templates_directory();
    return choice;
}

std::vector<stdx::u16string> remembered_template_locations(bool alternate) {
    LauncherConfig config(alternate);
    config.load();
    return config.values_of(launcher_key_name(LauncherKey::kConfigurationTemplatesLocation), true);
}

ConfigWriteResult remember_template_locations(const std::vector<stdx::u16string>& locations,
                                              bool alternateFolderChosen,
                                              bool alternateFileExists) {
    ConfigWriteResult result = kConfigWritten;
    if (!alternateFolderChosen) result = save_locations(locations, false);
    if (alternateFileExists) {
        const ConfigWriteResult alternate = save_locations(locations, true);
        if (result == kConfigWritten) result = alternate;
    }
    return result;
}

ConfigWriteResult remember_installed_directory(TemplatesChoice& choice,
                                               const stdx::u16string& directory) {
    std::vector<stdx::u16string> locations{directory};
    for (const stdx::u16string& location : choice.locations)
        if (!same_folder(location, directory)) locations.push_back(location);
    choice.locations.swap(locations);
    return remember_template_locations(choice.locations, choice.alternateFolderChosen,
                                       choice.alternateFileExists);
}

bool is_writable_directory(const stdx::u16string& directory) {
    const stdx::u16string folder = as_folder(directory);
    if (folder.empty()) return false;
    stdx::u16string probe;
    if (FileSystem::CreateTempFile(folder, stdx::u16string(u"Tavri"), probe) != kOk) return false;
    FileSystem::DeleteFile(probe);
    return true;
}

}  // namespace config
