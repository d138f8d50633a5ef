// kit: preparation runs once before the wizard shows anything. It finds the kit
// "ord8.dkz" beside the application (or in the working directory), proposes the
// templates directory, checks that the temporary volume can take the inflated kit and
// loads the kit. Each failure is shown once through a MessageSink and answered with
// false; preparation itself never shows windows, never writes outside the temporary
// directory and never throws.
//
// Threads: main thread only, before the installation worker exists.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "config/templates_location.h"
#include "fs/file_system.h"
#include "kit/installer_session.h"
#include "kit/message_sink.h"
#include "text/string.h"

// Style of every preparation message: error icon and critical style, one OK button.
constexpr std::uint32_t kPreparationErrorStyle = 0x1000001;
// The inflated kit may need up to this many times the kit's size in temporary space.
constexpr std::uint32_t kKitSpaceFactor = 3;

// Where the kit lies for an executable at `executablePath`: beside the bundle when the
// path runs through ".app/Contents/MacOS" (last occurrence, case-sensitive), else beside
// the executable; "/ord8.dkz" is appended to the folder.
stdx::mbstring KitPathForExecutable(const stdx::mbstring& executablePath);

// The kit's full path: in the working directory when `useCwd`, else by
// KitPathForExecutable. Empty when the folder cannot be found.
stdx::u16string GetKitPath(bool useCwd);

// The proposed templates directory made safe to show: a remote URL ("http://",
// "https://", "ftp://" anywhere) becomes empty, the first "file://" is cut out, and line
// feeds and carriage returns are removed.
stdx::u16string NormaliseTemplatesDirectory(stdx::u16string directory);

// True when three times the kit's size fits in `freeBytes`. The product is unsigned
// 32-bit and wraps for kits of 1,431,655,766 bytes or more, as the installer always did.
bool KitFitsInFreeSpace(std::uint32_t kitSize, std::uint32_t freeBytes);

// Shows the current language's text of catalogue `key` through `messages`.
void ShowPreparationError(MessageSink& messages, const char* key);

// Fills `session` and answers true when the installation may start. The kit is
// `kitPath` when given (the headless install names it), else GetKitPath(session.useCwd).
// On false one message has been shown: "IDS_ERROR_NOSOURCE" (kit not found; session
// unchanged),
// "IDS_ERROR_NOSPACE" or "IDS_ERROR_DAMAGEDSOURCE" (kit path and templates directory
// set; no temporary file left). On true `prepareStatus` is 0 and the kit is loaded.
// The space queries go through `FileSystemPolicy`, so tests can stand in for the volume.
template <class FileSystemPolicy>
bool PrepareInstallationWith(InstallerSession& session, MessageSink& messages,
                             const std::optional<stdx::u16string>& kitPath = std::nullopt);

// PrepareInstallationWith the real file system.
bool PrepareInstallation(InstallerSession& session, MessageSink& messages,
                         const std::optional<stdx::u16string>& kitPath = std::nullopt);

// The directory the user chose (typed on the directory page, or given to the headless
// install), as the installation takes it: every "\" becomes "/" (remembered locations
// end in "\"), and a leading "~" alone or before "/" becomes the home directory.
// Nothing when the result is empty or relative: the caller shows
// "IDS_SETUP_EMPTYTARGET" and the installation does not start.
std::optional<stdx::u16string> ChosenTemplatesDirectory(const stdx::u16string& typed);

template <class FileSystemPolicy>
bool PrepareInstallationWith(InstallerSession& session, MessageSink& messages,
                             const std::optional<stdx::u16string>& givenKitPath) {
    const stdx::u16string kitPath = givenKitPath ? *givenKitPath : GetKitPath(session.useCwd);
    bool kitFound = false;
    if (!kitPath.empty()) {
        FindData find;
        kitFound = FileSystemPolicy::FindFirst(find, kitPath);
        FileSystemPolicy::FindClose(find);
    }
    if (!kitFound) {
        ShowPreparationError(messages, "IDS_ERROR_NOSOURCE");
        return false;
    }
    session.kitPath = kitPath;

    session.templates = config::choose_templates_directory();
    session.templates.directory =
        NormaliseTemplatesDirectory(std::move(session.templates.directory));

    // Either query failing skips the check: loading will tell whether the kit fits.
    std::uint32_t kitSize = 0;
    std::uint32_t freeBytes = 0;
    if (FileSystemPolicy::GetFileSize(kitPath, &kitSize) == kOk &&
        FileSystemPolicy::GetFreeSpace(&freeBytes) == kOk &&
        !KitFitsInFreeSpace(kitSize, freeBytes)) {
        ShowPreparationError(messages, "IDS_ERROR_NOSPACE");
        return false;
    }

    if (session.installData.Load(kitPath) != kOk) {
        ShowPreparationError(messages, "IDS_ERROR_DAMAGEDSOURCE");
        return false;
    }
    session.prepareStatus = 0;
    return true;
}
