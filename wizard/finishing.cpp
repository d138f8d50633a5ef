#include "wizard/finishing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "kit/kit_format.h"
#include "text/encoding.h"
#include "wizard/platform_compat.h"

namespace {

stdx::u16string WithSlashes(stdx::u16string path) { return stdx::replace_all(path, u"\\", u"/"); }

// The opener's full path: a child may only make async-signal-safe calls, so the search
// along PATH is done before the fork.
std::optional<std::string> FindOnPath(const char* program) {
    const char* path = std::getenv("PATH");
    std::string folders = path != nullptr ? path : "/usr/bin:/bin";
    std::size_t start = 0;
    while (start <= folders.size()) {
        std::size_t end = folders.find(':', start);
        if (end == std::string::npos) end = folders.size();
        std::string candidate = folders.substr(start, end - start);
        candidate = (candidate.empty() ? "." : candidate) + "/" + program;
        struct stat status {};
        if (stat(candidate.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
            access(candidate.c_str(), X_OK) == 0)
            return candidate;
        start = end + 1;
    }
    return std::nullopt;
}

}  // namespace

stdx::u16string description_file_name(const std::vector<config::ProductInfo>& products,
                                      const stdx::u16string& language) {
    for (const config::ProductInfo& product : products) {
        if (stdx::compare_no_case(product.language, language) != 0) continue;
        if (!product.descriptionFile.empty()) return product.descriptionFile;
        break;
    }
    for (const config::ProductInfo& product : products)
        if (stdx::compare_no_case(product.language, u"en") == 0) return product.descriptionFile;
    return {};
}

std::optional<stdx::mbstring> DescriptionToOpen(const InstallData<LZCompressor, FileSystem>& kit,
                                                const stdx::u16string& targetDirectory,
                                                const stdx::u16string& language) {
    const stdx::u16string name = description_file_name(kit.products, language);
    if (name.empty() || !kitformat::is_safe_file_name(name.data(), name.size())) return {};
    const stdx::u16string relative = WithSlashes(name);
    bool owned = false;
    for (const auto& file : kit.files) owned = owned || WithSlashes(file.name) == relative;
    if (!owned) return {};
    std::optional<stdx::mbstring> path = FileSystem::ToSystemPath(targetDirectory + relative);
    struct stat status {};
    if (!path || lstat(path->c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return path;
}

bool OpenDocument(const stdx::mbstring& path) {
    const std::optional<std::string> opener = FindOnPath(kDocumentOpener);
    if (!opener) return false;
    char* const argv[] = {const_cast<char*>(kDocumentOpener), const_cast<char*>(path.c_str()),
                          nullptr};
    // The middle child exits at once, so the viewer belongs to init and never becomes a
    // zombie of the installer, and the installer waits only for that exit.
    const pid_t child = fork();
    if (child < 0) return false;
    if (child == 0) {
        if (fork() == 0) {
            setsid();
            const int null = open("/dev/null", O_RDWR);
            if (null >= 0) {
                dup2(null, STDIN_FILENO);
                dup2(null, STDOUT_FILENO);
                dup2(null, STDERR_FILENO);
            }
            execv(opener->c_str(), argv);
            _exit(127);
        }
        _exit(0);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
