// Helpers for the kit tests: a writer of inflated kits, deflate, and a scratch folder per
// test that is also the test's temporary directory.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "fs/file_system.h"
#include "text/encoding.h"

namespace kittest {

using Bytes = std::vector<unsigned char>;

// Appends little-endian kit fields; a record gets its stated length, or its real one.
struct KitWriter {
    KitWriter& U32(std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) bytes.push_back(std::uint8_t(value >> shift));
        return *this;
    }
    KitWriter& String(const std::u16string& text) {
        U32(std::uint32_t(text.size()));
        for (char16_t unit : text)
            bytes.insert(bytes.end(), {std::uint8_t(unit), std::uint8_t(unit >> 8)});
        return *this;
    }
    KitWriter& Raw(const std::string& more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
        return *this;
    }
    KitWriter& Record(const KitWriter& body, std::uint32_t statedLength = 0) {
        U32(statedLength ? statedLength : std::uint32_t(body.bytes.size() + 4));
        return Raw(std::string(body.bytes.begin(), body.bytes.end()));
    }
    Bytes bytes;
};

// Product "P-<language>" by "Tavri"; every file has the time 0x01D900000007.
inline KitWriter ProductBody(const std::u16string& language) {
    return KitWriter().String(language).String(u"P-" + language).String(u"Tavri").String(u"");
}
inline KitWriter FileBody(const std::u16string& name, std::uint32_t offset, std::uint32_t size) {
    return KitWriter().String(name).U32(7).U32(0x01D9).U32(offset).U32(size);
}

// Layout 1, one product per language, the files' records and then their contents.
inline Bytes BuildKit(const std::vector<std::u16string>& languages,
                      const std::vector<std::pair<std::u16string, std::string>>& files) {
    KitWriter kit, data;
    kit.U32(1).U32(std::uint32_t(languages.size()));
    for (const auto& language : languages) kit.Record(ProductBody(language));
    kit.U32(std::uint32_t(files.size()));
    for (const auto& [name, content] : files) {
        kit.Record(FileBody(name, std::uint32_t(data.bytes.size()), std::uint32_t(content.size())));
        data.Raw(content);
    }
    return kit.Raw(std::string(data.bytes.begin(), data.bytes.end())).bytes;
}

inline Bytes ZlibWrapped(const Bytes& inflated, int level) {
    Bytes out(compressBound(uLong(inflated.size())));
    uLongf length = uLongf(out.size());
    compress2(out.data(), &length, inflated.data(), uLong(inflated.size()), level);
    out.resize(length);
    return out;
}
// The raw stream inside the zlib wrapper: without its 2-byte header and 4-byte trailer.
inline Bytes Deflate(const Bytes& inflated, int level) {
    const Bytes wrapped = ZlibWrapped(inflated, level);
    return Bytes(wrapped.begin() + 2, wrapped.end() - 4);
}

inline void WriteBytes(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}
inline Bytes ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
inline std::size_t CountEntries(const std::string& folder) {
    const std::filesystem::directory_iterator entries(folder);
    return std::size_t(std::distance(begin(entries), end(entries)));
}
inline std::size_t CountOpenDescriptors() { return CountEntries("/dev/fd"); }
inline stdx::u16string Path(const std::string& path) { return stdx::from_multibyte(path.c_str()); }
inline std::string NativePath(const stdx::u16string& path) {
    return stdx::to_multibyte(path).c_str();
}
inline std::u16string Std(const stdx::u16string& text) { return text.c_str(); }  // printable

inline std::optional<std::string> Env(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}
inline void RestoreEnv(const char* name, const std::optional<std::string>& value) {
    value ? setenv(name, value->c_str(), 1) : unsetenv(name);
}

// A fresh folder holding "tmp" (TMPDIR while it lives) and "kits".
struct ScratchFolder {
    ScratchFolder() {
        std::filesystem::create_directories(root + "/kits");
        std::filesystem::create_directories(root + "/tmp");
        setenv("TMPDIR", (root + "/tmp").c_str(), 1);
    }
    ~ScratchFolder() {
        RestoreEnv("TMPDIR", oldTmpdir);
        std::filesystem::remove_all(root);
    }
    std::string kit(const std::string& name = "ord8.dkz") const { return root + "/kits/" + name; }
    std::size_t TempFileCount() const { return CountEntries(root + "/tmp"); }
    std::string StoreKit(const Bytes& inflated) {  // deflates; answers the path
        WriteBytes(kit(), Deflate(inflated, 6));
        return kit();
    }

    std::optional<std::string> oldTmpdir = Env("TMPDIR");
    std::string pattern = "/tmp/ord8-kit-test-XXXXXX";
    std::string root = mkdtemp(pattern.data()) ? pattern : throw std::runtime_error("mkdtemp");
};

}  // namespace kittest
