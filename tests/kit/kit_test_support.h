// The kit tests' own helpers: the little-endian fields of an inflated kit, deflate, and a
// scratch folder whose "tmp" is the temporary directory while it lives. Generic helpers
// come from tests/support/test_support.h.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/test_support.h"

namespace kittest {

inline std::string U32(std::uint32_t value) {
    return {char(value), char(value >> 8), char(value >> 16), char(value >> 24)};
}
inline std::string Str(const std::u16string& text) {  // unit count, then UTF-16LE
    std::string bytes = U32(std::uint32_t(text.size()));
    for (char16_t unit : text) bytes += {char(unit), char(unit >> 8)};
    return bytes;
}
// A record gets its stated length, or with 0 its real one (the length field included).
inline std::string Record(const std::string& body, std::uint32_t statedLength = 0) {
    return U32(statedLength ? statedLength : std::uint32_t(body.size() + 4)) + body;
}

// Product "P-<language>" by "Tavri"; files have the time 0x01D900000007 unless given one
// (in 100-nanosecond units since 1601).
constexpr std::uint64_t kKitFileTime = 0x01D900000007;
inline std::string ProductBody(const std::u16string& language) {
    return Str(language) + Str(u"P-" + language) + Str(u"Tavri") + Str(u"");
}
inline std::string FileBody(const std::u16string& name, std::uint32_t offset, std::uint32_t size,
                            std::uint64_t time = kKitFileTime) {
    return Str(name) + U32(std::uint32_t(time)) + U32(std::uint32_t(time >> 32)) + U32(offset) +
           U32(size);
}

// Layout 1, one product per language, the files' records and then their contents.
inline std::string BuildKit(const std::vector<std::u16string>& languages,
                            const std::vector<std::pair<std::u16string, std::string>>& files,
                            std::uint64_t time = kKitFileTime) {
    std::string kit = U32(1) + U32(std::uint32_t(languages.size())), data;
    for (const auto& language : languages) kit += Record(ProductBody(language));
    kit += U32(std::uint32_t(files.size()));
    for (const auto& [name, content] : files) {
        kit +=
            Record(FileBody(name, std::uint32_t(data.size()), std::uint32_t(content.size()), time));
        data += content;
    }
    return kit + data;
}

// Raw deflate, as kits are made. Z_FULL_FLUSH leaves a piece that refers to nothing
// before it, so pieces may be repeated.
inline std::string Deflate(const std::string& inflated, int level = 6, int flush = Z_FINISH) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, uLong(inflated.size())) + 16, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(inflated.data()));
    stream.avail_in = uInt(inflated.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = uInt(out.size());
    deflate(&stream, flush);
    deflateEnd(&stream);
    return out.substr(0, stream.total_out);
}

inline std::size_t OpenDescriptors() { return EntriesOf("/dev/fd").size(); }

// A scratch folder holding "tmp", the temporary directory while it lives, and a kit
// named with kHostile: no path of the loader may reach a shell.
struct KitScratch {
    KitScratch() { std::filesystem::create_directory(tmp); }
    ScratchDirectory root;
    std::string tmp = root / "tmp";
    std::string kit = root / (kHostile + ".dkz");
    ScopedEnvironment tmpdir{"TMPDIR", tmp};
};

}  // namespace kittest
