#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "fs/file_system.h"
#include "fs/path_text.h"
#include "fs/tree_removal.h"

namespace {

bool IsDirectory(const stdx::mbstring& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// A name may hold a newline or terminal escapes; the diagnostic must stay one line.
std::string Printable(const stdx::mbstring& path) {
    std::string text;
    for (const char c : path) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            text.push_back(c);
            continue;
        }
        const char escaped[] = {'\\', static_cast<char>('0' + (byte >> 6)),
                                static_cast<char>('0' + ((byte >> 3) & 7)),
                                static_cast<char>('0' + (byte & 7)), '\0'};
        text.append(escaped);
    }
    return text;
}

}  // namespace

ResultCode FileSystem::CreateDirectory(const stdx::u16string& path) {
    const std::optional<stdx::mbstring> converted = ToSystemPath(path);
    if (!converted || converted->empty()) return kFileNotFound;
    const stdx::mbstring& target = *converted;
    // Installing thousands of files asks for the same directories over and over.
    if (IsDirectory(target)) return kOk;
    // Each ancestor in turn; failures along the way are judged only by the end result,
    // which also covers a directory made concurrently by someone else.
    for (stdx::mbstring::size_type slash = target.find('/', 1); slash != stdx::mbstring::npos;
         slash = target.find('/', slash + 1)) {
        if (target[slash - 1] != '/') mkdir(target.substr(0, slash).c_str(), 0777);
    }
    mkdir(target.c_str(), 0777);
    return IsDirectory(target) ? kOk : kFileNotFound;
}

ResultCode FileSystem::DeleteDirectory(const stdx::u16string& path) {
    if (const std::optional<stdx::mbstring> target = ToSystemPath(path))
        fsdetail::RemoveTree(*target);
    return kOk;
}

ResultCode FileSystem::DeleteFile(const stdx::u16string& path) {
    const std::optional<stdx::mbstring> target = ToSystemPath(path);
    if (target && unlink(target->c_str()) != 0 && errno != ENOENT) {
        const std::string reason = std::generic_category().message(errno);
        std::fprintf(stderr, "cannot delete '%s': %s\n", Printable(*target).c_str(),
                     reason.c_str());
    }
    return kOk;
}
