#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "fs/file_system.h"
#include "fs/path_text.h"
#include "fs/unique_name.h"
#include "text/encoding.h"

ResultCode FileSystem::GetTempDirectory(stdx::u16string& path) {
    stdx::mbstring directory("/var/tmp/");
    if (const char* fromEnvironment = std::getenv("TMPDIR")) {
        struct stat status;
        if (stat(fromEnvironment, &status) == 0 && S_ISDIR(status.st_mode))
            directory = stdx::mbstring(fromEnvironment);
    }
    path = stdx::from_multibyte(directory);
    if (!path.empty() && path.back() != u'/') path.push_back(u'/');
    return kOk;
}

ResultCode FileSystem::CreateTempFile(const stdx::u16string& directory,
                                      const stdx::u16string& prefix, stdx::u16string& name) {
    stdx::mbstring stem = fsdetail::ToSystemPath(directory);
    // An empty directory means the current one, so no slash is put in front.
    if (!stem.empty() && stem.back() != '/') stem.push_back('/');
    stem.append(fsdetail::ToSystemPath(prefix));
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
