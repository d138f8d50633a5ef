#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "fs/file_system.h"
#include "fs/unique_name.h"
#include "text/encoding.h"

ResultCode FileSystem::GetTempDirectory(stdx::u16string& path) {
    stdx::mbstring directory("/var/tmp/");
    if (const char* fromEnvironment = std::getenv("TMPDIR")) {
        // A value that does not come back unchanged through UTF-16 would name another
        // folder once callers convert it again: it counts as unset.
        const stdx::mbstring bytes(fromEnvironment);
        const std::optional<stdx::mbstring> back = ToSystemPath(stdx::from_multibyte(bytes));
        struct stat status;
        if (back && *back == bytes && stat(fromEnvironment, &status) == 0 &&
            S_ISDIR(status.st_mode))
            directory = bytes;
    }
    path = stdx::from_multibyte(directory);
    if (!path.empty() && path.back() != u'/') path.push_back(u'/');
    return kOk;
}

ResultCode FileSystem::CreateTempFile(const stdx::u16string& directory,
                                      const stdx::u16string& prefix, stdx::u16string& name) {
    name.clear();
    stdx::u16string folder = directory;
    if (folder.empty()) GetTempDirectory(folder);
    const std::optional<stdx::mbstring> folderBytes = ToSystemPath(folder);
    const std::optional<stdx::mbstring> prefixBytes = ToSystemPath(prefix);
    if (!folderBytes || !prefixBytes) return kCannotWrite;
    stdx::mbstring stem = *folderBytes;
    if (!stem.empty() && stem.back() != '/') stem.push_back('/');
    stem.append(*prefixBytes);
    stdx::mbstring created;
    const int error = fsdetail::CreateUnderUniqueName(
        stem,
        [](const char* candidate) {
            const int fd = open(candidate, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
            if (fd < 0) return errno;
            close(fd);
            return 0;
        },
        created);
    name = stdx::from_multibyte(created);
    return error == 0 ? kOk : kCannotWrite;
}
