#include <cerrno>
#include <cstdio>

#include "fs/file_system.h"
#include "fs/path_text.h"
#include "fs/tree_copy.h"
#include "fs/tree_removal.h"
#include "fs/unique_name.h"

namespace {

// The copy is built under a hidden name beside the destination and renamed into place
// only when complete: an existing destination stays intact until then, and a failure
// leaves nothing half-written under the destination's name.
int MoveAcrossFileSystems(const stdx::mbstring& from, const stdx::mbstring& to) {
    const stdx::mbstring stem = fsdetail::JoinPath(fsdetail::ParentOf(to), ".ord8-move-");
    stdx::mbstring staged;
    int error = fsdetail::CreateUnderUniqueName(
        stem, [&from](const char* candidate) { return fsdetail::CopyTree(from, candidate); },
        staged);
    if (error != 0) return error;
    if (std::rename(staged.c_str(), to.c_str()) != 0) {
        error = errno;
        fsdetail::RemoveTree(staged);
        return error;
    }
    // The source goes only now that its copy is in place.
    return fsdetail::RemoveTree(from);
}

}  // namespace

ResultCode FileSystem::MoveFile(const stdx::u16string& from, const stdx::u16string& to) {
    const std::optional<stdx::mbstring> source = ToSystemPath(from);
    const std::optional<stdx::mbstring> destination = ToSystemPath(to);
    if (!source || !destination) return kFileNotFound;
    if (std::rename(source->c_str(), destination->c_str()) == 0) return kOk;
    if (errno != EXDEV) return kFileNotFound;
    return MoveAcrossFileSystems(*source, *destination) == 0 ? kOk : kFileNotFound;
}
