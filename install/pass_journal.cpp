#include "install/pass_journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "fs/file_system.h"
#include "text/encoding.h"

namespace journal {
namespace {

bool StartsWith(const stdx::u16string& text, const stdx::u16string& prefix) {
    return text.size() >= prefix.size() && text.substr(0, prefix.size()) == prefix;
}

bool IsStrictlyInside(const stdx::u16string& path, const stdx::u16string& folder) {
    return path.size() > folder.size() && StartsWith(path, folder);
}

}  // namespace

const char* Refusal(char kind, const stdx::u16string& path, const TransactionRecord& record) {
    const stdx::u16string& templates = record.targetDirectory;
    if (templates.empty() && kind != kTemplates) return "the first entry is not the templates";
    if (kind == kCommitted) return path.empty() ? nullptr : "a commit entry with a path";
    if (!IsCleanAbsolutePath(path)) return "a path that is not clean and absolute";
    switch (kind) {
        case kTemplates:
            if (!templates.empty()) return "a second templates directory";
            return path.back() == u'/' ? nullptr : "a templates directory without its '/'";
        case kBackupFolder: {
            if (!record.backupDirectory.empty()) return "a second backup folder";
            const stdx::u16string::size_type slash = path.rfind(u'/', path.size() - 2);
            const bool named = path.back() == u'/' && path.size() > 1 &&
                               path.substr(slash + 1, 5) == stdx::u16string(u"o8stp");
            return named ? nullptr : "a backup folder not named o8stp<n>/";
        }
        case kDirectory:
            // The chain up to the templates directory, or a folder inside it.
            return StartsWith(templates, path + u"/") || IsStrictlyInside(path, templates)
                       ? nullptr
                       : "a directory outside the templates directory";
        case kBackedUp:
        case kCreatedFile:
            return IsStrictlyInside(path, templates) ? nullptr
                                                     : "a file outside the templates directory";
        default:
            return "an unknown entry kind";
    }
}

namespace {

void Take(char kind, const stdx::u16string& path, Contents& contents) {
    TransactionRecord& record = contents.record;
    switch (kind) {
        case kTemplates:
            record.targetDirectory = path;
            break;
        case kBackupFolder:
            record.backupDirectory = path;
            break;
        case kDirectory:
            record.createdDirectories.push_back(path);
            break;
        case kBackedUp:
            record.backedUpFiles.push_back(path);
            break;
        case kCreatedFile:
            record.createdFiles.push_back(path);
            break;
        case kCommitted:
            contents.committed = true;
            break;
    }
}

void AppendEntry(std::string& out, char kind, const stdx::u16string& path) {
    const std::uint32_t units = static_cast<std::uint32_t>(path.size());
    out.push_back(kind);
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>(units >> shift));
    for (const char16_t unit : path) {
        out.push_back(static_cast<char>(unit & 0xFF));
        out.push_back(static_cast<char>(unit >> 8));
    }
}

bool WriteWhole(int fd, const std::string& bytes) {
    return write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

}  // namespace

bool IsCleanAbsolutePath(const stdx::u16string& path) {
    if (path.empty() || path[0] != u'/') return false;
    for (stdx::u16string::size_type start = 1; start <= path.size();) {
        stdx::u16string::size_type end = path.find(u'/', start);
        if (end == stdx::u16string::npos) end = path.size();
        const stdx::u16string component = path.substr(start, end - start);
        if (component == u"." || component == u".." || component.find(u'\0') != component.npos)
            return false;
        start = end + 1;
    }
    return true;
}

Contents Parse(const std::uint8_t* bytes, std::size_t size) {
    Contents contents;
    if (size < sizeof kMagic || std::memcmp(bytes, kMagic, sizeof kMagic) != 0) {
        if (size > 0) contents.damage = "no journal header";
        return contents;
    }
    contents.hasHeader = true;
    std::size_t at = sizeof kMagic;
    contents.wholeBytes = at;
    while (at < size && !contents.committed) {
        if (size - at < kEntryHeaderBytes) {
            contents.damage = "a torn entry";
            break;
        }
        const char kind = static_cast<char>(bytes[at]);
        std::uint32_t units = 0;
        for (int i = 0; i < 4; ++i) units |= std::uint32_t{bytes[at + 1 + i]} << (8 * i);
        if (units > kMaxPathUnits) {
            contents.damage = "a path longer than any folder allows";
            break;
        }
        if (size - at - kEntryHeaderBytes < 2 * std::size_t{units}) {
            contents.damage = "a torn entry";
            break;
        }
        const std::uint8_t* unit = bytes + at + kEntryHeaderBytes;
        stdx::u16string path;
        for (std::uint32_t i = 0; i < units; ++i, unit += 2)
            path.push_back(static_cast<char16_t>(unit[0] | unit[1] << 8));
        if ((contents.damage = Refusal(kind, path, contents.record)) != nullptr) break;
        Take(kind, path, contents);
        at += kEntryHeaderBytes + 2 * std::size_t{units};
        contents.wholeBytes = at;
    }
    return contents;
}

}  // namespace journal

ResultCode PassJournal::Create(const stdx::u16string& folder, const stdx::u16string& templates,
                               std::unique_ptr<PassJournal>& journal) {
    const std::optional<stdx::mbstring> folderPath = FileSystem::ToSystemPath(folder);
    if (!folderPath || (mkdir(folderPath->c_str(), 0700) != 0 && errno != EEXIST))
        return kCannotWrite;
    std::string first(journal::kMagic, sizeof journal::kMagic);
    journal::AppendEntry(first, journal::kTemplates, templates);
    // Recovery may catch a new, still empty journal before it is locked and remove it:
    // a journal found unlinked once locked is given up for another.
    for (int attempt = 0; attempt < 8; ++attempt) {
        stdx::u16string name;
        if (FileSystem::CreateTempFile(folder, stdx::from_multibyte(journal::kFilePrefix), name) !=
            kOk)
            return kCannotWrite;
        const std::optional<stdx::mbstring> path = FileSystem::ToSystemPath(name);
        if (!path) return kCannotWrite;
        const int fd = open(path->c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC);
        struct stat status;
        if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0 && fstat(fd, &status) == 0 &&
            status.st_nlink > 0) {
            journal.reset(new PassJournal(fd, *path));
            if (journal::WriteWhole(fd, first)) return kOk;
            journal->Remove();
            journal.reset();
            return kCannotWrite;
        }
        if (fd >= 0) close(fd);
    }
    return kCannotWrite;
}

PassJournal::~PassJournal() {
    if (fd_ >= 0) close(fd_);
}

ResultCode PassJournal::Append(char kind, const stdx::u16string& path) {
    std::string entry;
    journal::AppendEntry(entry, kind, path);
    if (!broken_ && fd_ >= 0 && journal::WriteWhole(fd_, entry)) return kOk;
    broken_ = true;
    return kCannotWrite;
}

void PassJournal::Remove() {
    if (fd_ < 0) return;
    unlink(path_.c_str());
    close(fd_);
    fd_ = -1;
}
