#include "fs/path_text.h"

#include "fs/file_system.h"
#include "text/encoding.h"

std::optional<stdx::mbstring> FileSystem::ToSystemPath(const stdx::u16string& path) {
    if (path.find(u'\0') != stdx::u16string::npos) return std::nullopt;
    // Measuring answers -1 when any unit has no multibyte form.
    if (stdx::utf16_to_multibyte(path.data(), path.size(), nullptr, 0) < 0) return std::nullopt;
    return stdx::to_multibyte(path);
}

namespace fsdetail {

stdx::mbstring WithoutTrailingSlashes(const stdx::mbstring& path) {
    stdx::mbstring::size_type end = path.size();
    while (end > 1 && path[end - 1] == '/') --end;
    return path.substr(0, end);
}

stdx::mbstring ParentOf(const stdx::mbstring& path) {
    const stdx::mbstring trimmed = WithoutTrailingSlashes(path);
    const stdx::mbstring::size_type slash = trimmed.rfind('/');
    if (slash == stdx::mbstring::npos) return stdx::mbstring(".");
    if (slash == 0) return stdx::mbstring("/");
    return trimmed.substr(0, slash);
}

stdx::mbstring LastComponentOf(const stdx::mbstring& path) {
    const stdx::mbstring trimmed = WithoutTrailingSlashes(path);
    const stdx::mbstring::size_type slash = trimmed.rfind('/');
    return slash == stdx::mbstring::npos ? trimmed : trimmed.substr(slash + 1);
}

stdx::mbstring JoinPath(const stdx::mbstring& directory, const stdx::mbstring& name) {
    stdx::mbstring joined(directory);
    if (!joined.empty() && joined.back() != '/') joined.push_back('/');
    joined.append(name);
    return joined;
}

}  // namespace fsdetail
