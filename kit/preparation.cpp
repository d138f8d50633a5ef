#include "kit/preparation.h"

#include <unistd.h>

#include <cstdlib>

#include "app/string_catalogue.h"
#include "config/launcher_paths.h"
#include "kit/executable_path.h"
#include "kit/kit_format.h"
#include "text/encoding.h"

namespace {

constexpr char kBundleExecutableFolder[] = ".app/Contents/MacOS";
constexpr std::size_t kBundleExecutableFolderLength = sizeof kBundleExecutableFolder - 1;

stdx::mbstring KitPathInFolder(const stdx::mbstring& folder) {
    stdx::mbstring path = folder;
    path += "/";
    path += kitformat::kKitFileName;
    return path;
}

stdx::mbstring WorkingDirectory() {
    char* cwd = getcwd(nullptr, 0);  // the system sizes and allocates it
    if (cwd == nullptr) return stdx::mbstring();
    stdx::mbstring folder(cwd);
    std::free(cwd);
    return folder;
}

void RemoveEvery(stdx::u16string& text, char16_t unit) {
    stdx::u16string kept;
    kept.reserve(text.size());
    for (char16_t c : text) {
        if (c != unit) kept.push_back(c);
    }
    text.swap(kept);
}

}  // namespace

stdx::mbstring KitPathForExecutable(const stdx::mbstring& executablePath) {
    std::size_t searchFrom = stdx::mbstring::npos;
    if (executablePath.size() >= kBundleExecutableFolderLength) {
        searchFrom = executablePath.rfind(kBundleExecutableFolder);
    }
    // Inside a bundle the kit lies beside the bundle, not inside it.
    const std::size_t slash = executablePath.rfind('/', searchFrom);
    return KitPathInFolder(slash == stdx::mbstring::npos ? executablePath
                                                         : executablePath.substr(0, slash));
}

stdx::u16string GetKitPath(bool useCwd) {
    stdx::mbstring kitPath;
    if (useCwd) {
        const stdx::mbstring folder = WorkingDirectory();
        if (folder.empty()) return stdx::u16string();
        kitPath = KitPathInFolder(folder);
    } else {
        const stdx::mbstring executable = ExecutablePath();
        if (executable.empty()) return stdx::u16string();
        kitPath = KitPathForExecutable(executable);
    }
    return stdx::from_multibyte(kitPath);
}

stdx::u16string NormaliseTemplatesDirectory(stdx::u16string directory) {
    // Only local folders can receive templates; a remote one is not proposed at all.
    for (const char16_t* remote : {u"http://", u"https://", u"ftp://"}) {
        if (directory.find(remote) != stdx::u16string::npos) directory.clear();
    }
    const std::size_t fileScheme = directory.find(u"file://");
    if (fileScheme != stdx::u16string::npos) directory.erase(fileScheme, 7);
    RemoveEvery(directory, u'\n');
    RemoveEvery(directory, u'\r');
    return directory;
}

bool KitFitsInFreeSpace(std::uint32_t kitSize, std::uint32_t freeBytes) {
    const std::uint32_t needed = kKitSpaceFactor * kitSize;  // wraps, deliberately
    return needed <= freeBytes;
}

void ShowPreparationError(MessageSink& messages, const char* key) {
    messages.ShowError(key, LoadString(key), kPreparationErrorStyle);
}

bool PrepareInstallation(InstallerSession& session, MessageSink& messages,
                         const std::optional<stdx::u16string>& kitPath) {
    return PrepareInstallationWith<FileSystem>(session, messages, kitPath);
}

std::optional<stdx::u16string> ChosenTemplatesDirectory(const stdx::u16string& typed) {
    stdx::u16string directory = typed;
    stdx::replace_all(directory, u"\\", u"/");
    if (directory == u"~" || directory.substr(0, 2) == u"~/")
        directory = config::home_directory() + directory.substr(1);
    // A relative path would land wherever the installer happened to be started.
    if (directory.empty() || directory[0] != u'/') return std::nullopt;
    return directory;
}
