// Helpers for the kit tests: a writer of inflated kits, raw deflate, and a scratch
// folder per test that is also the test's temporary directory.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "text/string.h"

namespace kittest {

using Bytes = std::vector<unsigned char>;

// Appends little-endian kit fields; a record gets its stated length, or its real one.
struct KitWriter {
    KitWriter& U32(std::uint32_t value);
    KitWriter& String(const std::u16string& text);
    KitWriter& Raw(const std::string& more);
    KitWriter& Record(const KitWriter& body, std::uint32_t statedLength = 0);
    Bytes bytes;
};

KitWriter ProductBody(const std::u16string& language);  // name "P-" + language
KitWriter FileBody(const std::u16string& name, std::uint32_t offset, std::uint32_t size);

// Layout 1, one product per language, the files' records and then their contents.
Bytes BuildKit(const std::vector<std::u16string>& languages,
               const std::vector<std::pair<std::u16string, std::string>>& files);

Bytes Deflate(const Bytes& inflated, int level, int strategy = 0);
void WriteBytes(const std::string& path, const Bytes& bytes);
Bytes ReadBytes(const std::string& path);
int CountOpenDescriptors();
stdx::u16string Path(const std::string& path);
std::string NativePath(const stdx::u16string& path);
std::u16string Std(const stdx::u16string& text);  // comparable and printable

// A fresh folder holding "tmp" (TMPDIR while it lives) and "kits".
struct ScratchFolder {
    ScratchFolder();
    ~ScratchFolder();
    std::string kit(const std::string& name = "ord8.dkz") const { return root + "/kits/" + name; }
    std::size_t TempFileCount() const;
    std::string StoreKit(const Bytes& inflated, int level = 6);  // deflates; answers the path

    std::string root;
    std::string oldTmpdir;
};

}  // namespace kittest
