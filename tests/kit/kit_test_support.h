// The kit tests' own helpers: a writer of inflated kits, deflate, and a scratch folder
// whose "tmp" is the temporary directory while it lives. Generic helpers come from
// tests/support/test_support.h.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/test_support.h"

namespace kittest {

// Appends little-endian kit fields; a record gets its stated length, or its real one.
struct KitWriter {
    KitWriter& U32(std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) bytes += char(value >> shift);
        return *this;
    }
    KitWriter& String(const std::u16string& text) {
        U32(std::uint32_t(text.size()));
        for (char16_t unit : text) bytes += {char(unit), char(unit >> 8)};
        return *this;
    }
    KitWriter& Raw(const std::string& more) {
        bytes += more;
        return *this;
    }
    KitWriter& Record(const KitWriter& body, std::uint32_t statedLength = 0) {
        return U32(statedLength ? statedLength : std::uint32_t(body.bytes.size() + 4))
            .Raw(body.bytes);
    }
    std::string bytes;
};

// Product "P-<language>" by "Tavri"; files have the time 0x01D900000007 unless given one
// (in 100-nanosecond units since 1601).
constexpr std::uint64_t kKitFileTime = 0x01D900000007;
inline KitWriter ProductBody(const std::u16string& language) {
    return KitWriter().String(language).String(u"P-" + language).String(u"Tavri").String(u"");
}
inline KitWriter FileBody(const std::u16string& name, std::uint32_t offset, std::uint32_t size,
                          std::uint64_t time = kKitFileTime) {
    return KitWriter()
        .String(name)
        .U32(std::uint32_t(time))
        .U32(std::uint32_t(time >> 32))
        .U32(offset)
        .U32(size);
}

// Layout 1, one product per language, the files' records and then their contents.
inline std::string BuildKit(const std::vector<std::u16string>& languages,
                            const std::vector<std::pair<std::u16string, std::string>>& files,
                            std::uint64_t time = kKitFileTime) {
    KitWriter kit, data;
    kit.U32(1).U32(std::uint32_t(languages.size()));
    for (const auto& language : languages) kit.Record(ProductBody(language));
    kit.U32(std::uint32_t(files.size()));
    for (const auto& [name, content] : files) {
        kit.Record(
            FileBody(name, std::uint32_t(data.bytes.size()), std::uint32_t(content.size()), time));
        data.Raw(content);
    }
    return kit.Raw(data.bytes).bytes;
}

// Raw deflate, as kits are made; window bits 15 give the zlib wrapper instead. Z_FULL_FLUSH
// leaves a piece that refers to nothing before it, so pieces may be repeated.
inline std::string Deflate(const std::string& inflated, int level = 6, int windowBits = -15,
                           int flush = Z_FINISH) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, uLong(inflated.size())) + 16, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(inflated.data()));
    stream.avail_in = uInt(inflated.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = uInt(out.size());
    deflate(&stream, flush);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
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
