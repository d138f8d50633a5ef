#include <fnmatch.h>

#include "fs/file_system.h"
#include "text/encoding.h"

FindData::~FindData() { FileSystem::FindClose(*this); }

bool FileSystem::FindFirst(FindData& find, const stdx::u16string& path) {
    // A record may be reused; its previous stream must not leak.
    FindClose(find);
    const std::optional<stdx::mbstring> searchPath = ToSystemPath(path);
    if (!searchPath) return false;
    find.searchPath = *searchPath;
    const stdx::mbstring::size_type slash = find.searchPath.rfind('/');
    if (slash == stdx::mbstring::npos) {
        // Without a separator the whole path is both the directory and the mask.
        find.directory = find.searchPath;
        find.mask = find.searchPath;
    } else {
        find.directory = find.searchPath.substr(0, slash);
        find.mask = find.searchPath.substr(slash + 1);
    }
    find.stream = opendir(find.directory.c_str());
    if (find.stream == nullptr) return false;
    return FindNext(find);
}

bool FileSystem::FindNext(FindData& find) {
    if (find.stream == nullptr) return false;
    while (const dirent* entry = readdir(find.stream)) {
        const int match = fnmatch(find.mask.c_str(), entry->d_name, FNM_PATHNAME);
        if (match == FNM_NOMATCH) continue;
        if (match != 0) return false;
        find.currentName = stdx::mbstring(entry->d_name);
        // The search path, not directory + name, is what gets stat'ed: callers rely on
        // a wildcard search yielding nothing (see the header).
        return stat(find.searchPath.c_str(), &find.status) == 0;
    }
    FindClose(find);
    return false;
}

stdx::u16string FileSystem::GetFindName(const FindData& find) {
    if (find.stream == nullptr) return stdx::u16string();
    return stdx::from_multibyte(find.currentName);
}

std::uint32_t FileSystem::GetFindAttributes(const FindData& find) {
    if (find.stream == nullptr) return 0;
    return (static_cast<std::uint32_t>(find.status.st_mode) >> 10) & kAttributeDirectory;
}

void FileSystem::FindClose(FindData& find) {
    if (find.stream != nullptr) closedir(find.stream);
    find.stream = nullptr;
}
