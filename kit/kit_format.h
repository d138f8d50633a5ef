// The one home of the kit's byte format: field widths, layout values and the little-
// endian field helpers shared by the kit reader and the kit tool. The format itself is
// written down as a grammar in doc/kit-format.md.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kitformat {

// The kit file that lies next to the installer.
constexpr char kKitFileName[] = "ord8.dkz";

// The kit on disk is one raw deflate stream: no zlib or gzip header, no trailer.
constexpr int kRawDeflateWindowBits = -15;

// First field of the inflated kit. Any non-zero value means the multi-language layout;
// writers use 1.
constexpr std::uint32_t kSingleProductLayout = 0;
constexpr std::uint32_t kMultiLanguageLayout = 1;

// Offsets and sizes are 32-bit, so no byte beyond this one can be addressed.
constexpr std::uint64_t kLargestInflatedKit = 0xFFFFFFFF;

constexpr std::size_t kU32Size = 4;
constexpr std::size_t kFileTimeSize = 8;

// A kit string is a 32-bit unit count followed by that many UTF-16LE units.
constexpr std::size_t kStringCountSize = kU32Size;

// Records start with their own total length, these 4 bytes included.
constexpr std::size_t kRecordLengthSize = kU32Size;
// Product record: length, then language, name, provider, description file.
constexpr std::size_t kProductStringCount = 4;
constexpr std::size_t kMinProductRecordLength =
    kRecordLengthSize + kProductStringCount * kStringCountSize;  // 20
// File record: length, name, modification time, offset, size.
constexpr std::size_t kFileFixedFieldsSize = kFileTimeSize + 2 * kU32Size;  // 16
constexpr std::size_t kMinFileRecordLength =
    kRecordLengthSize + kStringCountSize + kFileFixedFieldsSize;  // 24

inline std::uint32_t read_u32le(const unsigned char* p) {
    return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8 |
           static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

inline std::uint64_t read_u64le(const unsigned char* p) {
    return static_cast<std::uint64_t>(read_u32le(p)) | static_cast<std::uint64_t>(read_u32le(p + 4))
                                                           << 32;
}

inline void append_u32le(std::vector<unsigned char>& out, std::uint32_t v) {
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<unsigned char>(v >> shift));
}

inline void append_u64le(std::vector<unsigned char>& out, std::uint64_t v) {
    append_u32le(out, static_cast<std::uint32_t>(v));
    append_u32le(out, static_cast<std::uint32_t>(v >> 32));
}

// A kit file name may be installed only when it stays inside the templates directory:
// not empty, no zero unit, no leading separator or drive letter ("C:"), and no ".."
// segment once every '\' is read as '/'. Nor may it hold a surrogate unit, paired or
// not: the conversion to the system's encoding stops at the first one, so such a name
// would reach the disk cut short (".." + U+D800 as "..", U+1F600 + ".txt" as the empty
// name, that is the templates directory itself).
bool is_safe_file_name(const char16_t* units, std::size_t count);

// Why a file name may not be installed, as one of the two reasons below (inline: one
// address in the whole program), or null when is_safe_file_name holds.
inline constexpr char kUnsafeFileName[] = "unsafe file name";
inline constexpr char kSurrogateInFileName[] = "file name holds a surrogate";
const char* FileNameRefusal(const char16_t* units, std::size_t count);

}  // namespace kitformat
