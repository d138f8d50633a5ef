// Helpers for the kit tests: a writer of inflated kits, raw deflate, a scratch folder
// that is also the temporary directory, and small file utilities.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "text/string.h"

namespace kittest {

using Bytes = std::vector<unsigned char>;

// Low-level writer of inflated kit bytes; every append returns *this.
class KitWriter {
  public:
    KitWriter& U32(std::uint32_t value);
    KitWriter& U64(std::uint64_t value);
    KitWriter& String(const std::u16string& text);  // count, then UTF-16LE units
    KitWriter& Raw(const Bytes& bytes);
    KitWriter& Raw(const std::string& bytes);
    // A record: its total length (given, or computed when 0), then `body`.
    KitWriter& Record(const Bytes& body, std::uint32_t statedLength = 0);
    const Bytes& bytes() const { return bytes_; }

  private:
    Bytes bytes_;
};

struct ProductSpec {
    std::u16string language, name, provider, description;
    std::size_t trailingBytes = 0;  // ignored bytes after the four strings
};

struct FileSpec {
    std::u16string name;
    std::string content;
    std::uint64_t modificationTime = 0x01D0000000000000ull;
    std::size_t trailingBytes = 0;
};

Bytes ProductRecordBody(const ProductSpec& product);
// A file record body whose offset field is `offset` (relative to the data area).
Bytes FileRecordBody(const FileSpec& file, std::uint32_t offset);

// A whole kit: layout, products (layout != 0) and files, then every file's content in
// order, each at the offset its record states.
Bytes BuildKit(std::uint32_t layout, const std::vector<ProductSpec>& products,
               const std::vector<FileSpec>& files);

// Raw deflate (no header) at `level` with zlib's `strategy`.
Bytes Deflate(const Bytes& inflated, int level, int strategy = 0);

void WriteBytes(const std::string& path, const Bytes& bytes);
Bytes ReadBytes(const std::string& path);
bool Exists(const std::string& path);
std::vector<std::string> ListFolder(const std::string& path);
int CountOpenDescriptors();

// Bytes readable from `handle` at absolute `position`; the handle's position moves.
Bytes ReadAt(std::int64_t handle, std::uint32_t position, std::uint32_t count);
std::uint32_t CurrentPosition(std::int64_t handle);

stdx::u16string Path(const std::string& path);        // a file path as the kit code takes it
std::string NativePath(const stdx::u16string& path);  // back to bytes
std::u16string Std(const stdx::u16string& text);      // comparable and printable in tests

// A fresh folder per test with "tmp" (made TMPDIR for the test) and "kits" inside; the
// previous TMPDIR comes back and the folder is removed on destruction.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& root() const { return root_; }
    std::string temp() const { return root_ + "/tmp"; }
    std::string kit(const std::string& name = "ord8.dkz") const { return root_ + "/kits/" + name; }
    std::vector<std::string> TempEntries() const { return ListFolder(temp()); }

    // Deflates `inflated` and stores it as a kit; answers its path.
    std::string StoreKit(const Bytes& inflated, int level = 6,
                         const std::string& name = "ord8.dkz");

  private:
    std::string root_;
    bool hadTmpdir_ = false;
    std::string oldTmpdir_;
};

}  // namespace kittest
