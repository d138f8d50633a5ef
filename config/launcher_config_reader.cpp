#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "config/launcher_config_file.h"
#include "config/launcher_config_parser.h"
#include "config/multibyte_chunk_decoder.h"
#include "fs/file_system.h"

namespace config {
namespace {

constexpr std::size_t kChunkBytes = 1024;

// Closes the stream on every way out.
struct InputFile {
    std::FILE* stream = nullptr;
    int openError = 0;
    explicit InputFile(const stdx::u16string& path) {
        // A path that does not convert whole names some other file: it is not there.
        const std::optional<stdx::mbstring> bytes = FileSystem::ToSystemPath(path);
        if (bytes) stream = std::fopen(bytes->c_str(), "rb");
        if (stream == nullptr) openError = bytes ? errno : ENOENT;
    }
    ~InputFile() {
        if (stream != nullptr) std::fclose(stream);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
};

}  // namespace

bool read_config_file(const stdx::u16string& path, LauncherConfigStore& store) {
    InputFile file(path);
    if (file.stream == nullptr) return file.openError == ENOENT || file.openError == ENOTDIR;
    MultibyteChunkDecoder decoder;
    LauncherConfigParser parser(store);
    char chunk[kChunkBytes];
    std::size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, file.stream)) > 0) {
        const stdx::u16string text = decoder.decode(chunk, got);
        parser.feed(text.data(), text.size());
    }
    // After a read error what was read still counts; the answer tells it was not all.
    parser.finish();
    return std::ferror(file.stream) == 0;
}

bool file_starts_with_utf16_bom(const stdx::u16string& path) {
    InputFile file(path);
    if (file.stream == nullptr) return false;
    unsigned char bytes[2];
    if (std::fread(bytes, 1, sizeof bytes, file.stream) != sizeof bytes) return false;
    // Both platforms we build for are little-endian, so this is the machine's order.
    const std::uint16_t unit = static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
    return unit != 0xFEFF;
}

}  // namespace config
